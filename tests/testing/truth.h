#pragma once

#include "support/files.h"
#include "support/text.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace quorvex::testing {

using TsvRow = std::vector<std::wstring>;

// The items of a list that is written as "one, two, three".
inline std::vector<std::wstring> Items(std::wstring list, const wchar_t* separator = L", ") {
    std::vector<std::wstring> items;
    while (!list.empty()) items.push_back(support::NextField(list, separator, true));
    return items;
}

// The folder of a file of the test data: "sample", or a folder below it.
inline std::wstring DataFolder(const std::wstring& name) {
    return support::ReplaceAll(support::FromUtf8(QUORVEX_TEST_DATA), L"/", L"\\") + L"\\" + name;
}

// A tab-separated file less its header line. Fails the running test when it holds no rows: a check over no
// rows proves nothing.
inline std::vector<TsvRow> ReadTsv(const std::wstring& path) {
    std::vector<TsvRow> rows;
    std::wstring text = support::FromUtf8(support::ReadFileBytes(path));
    std::size_t at = 0;
    while (at < text.size()) {
        const std::size_t end = std::min(text.find(L'\n', at), text.size());
        std::wstring line = text.substr(at, end - at);
        if (!line.empty() && line.back() == L'\r') line.pop_back();
        TsvRow row;
        for (std::size_t field = 0;;) {
            const std::size_t tab = line.find(L'\t', field);
            row.push_back(line.substr(field, tab - field));
            if (tab == std::wstring::npos) break;
            field = tab + 1;
        }
        rows.push_back(std::move(row));
        at = end + 1;
    }
    if (rows.size() < 2) {
        ADD_FAILURE() << "no rows in " << support::ToUtf8(path);
        return {};
    }
    rows.erase(rows.begin());
    return rows;
}

} // namespace quorvex::testing
