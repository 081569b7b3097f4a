#pragma once

#include "service/row_source.h"

#include <map>
#include <string>

namespace quorvex::service {

// Plain packed rows from tab-separated text files in a folder: rows_full.tsv, rows_street.tsv, postzon.tsv.
class TsvRowSource : public RowSource {
  public:
    explicit TsvRowSource(const std::wstring& folder);

    std::optional<std::wstring> FullRow(const std::wstring& key) const override;
    std::optional<std::wstring> StreetRow(const std::wstring& key) const override;
    std::optional<PostZonRow> PostZonByPostcode(const std::wstring& key) const override;
    std::optional<PostZonRow> PostZonByReference(const std::wstring& reference) const override;
    std::vector<PostZonRow> PostZonInBox(const Box& box) const override;
    void WalkFull(const std::function<void(const std::wstring& key, const std::wstring& plain)>& visit) const override;

  private:
    std::map<std::wstring, std::wstring> full_;
    std::map<std::wstring, std::wstring> street_;
    std::map<std::wstring, PostZonRow> postZon_;
};

} // namespace quorvex::service
