#include "quorvex/clean.h"

#include "quorvex/clean_workers.h"
#include "quorvex/file_system.h"
#include "quorvex/progress_line.h"
#include "quorvex/resume.h"
#include "quorvex/row_writer.h"
#include "support/error.h"
#include "support/files.h"
#include "support/text.h"

#include <fstream>
#include <iostream>

namespace quorvex::cli {
namespace {

bool IsStandardStream(const std::filesystem::path& path) {
    return path == "-";
}

class CleanRun {
  public:
    CleanRun(Console& console, const CleanRequest& request) : console_(console), request_(request) {}

    Report Run();

  private:
    std::istream& OpenInput();
    // False with the report ended when the call makes no sense.
    bool FindColumns(const CsvReader& reader, const std::vector<std::string>& names);
    bool MayWrite();
    std::uint64_t ResumeAt(CsvReader& reader, const std::string& header);
    void Work(CsvReader& reader, RowWriter& writer);
    void Finish(std::wstring failure);

    Console& console_;
    const CleanRequest& request_;
    std::ifstream file_;
    std::uint64_t inputSize_ = 0;
    CleanColumns columns_;
    CleanedRows total_;
    std::uint64_t before_ = 0; // rows of an earlier run
    Report report_{"clean", {"rows", "exact", "several", "none", "failed", "resumed_after"}, Report::Layout::Tall};
};

Report CleanRun::Run() {
    std::istream& input = OpenInput();
    if (!MayWrite()) return report_;
    CsvReader reader(input, request_.separator, request_.utf8);
    std::vector<std::string> names;
    if (!reader.ReadHeader(names)) {
        report_.End(Outcome::Failed, L"the list is empty; its first row must name the columns");
        return report_;
    }
    if (!FindColumns(reader, names)) return report_;
    const std::string header = (reader.Format().byteOrderMark ? std::string(kByteOrderMark) : std::string()) +
                               CleanedHeader(reader.HeaderRow(), reader.Format());
    std::wstring failure;
    try {
        if (IsStandardStream(request_.output)) {
            RowWriter writer;
            writer.Write(header);
            Work(reader, writer);
        } else {
            const std::uint64_t offset = request_.resume ? ResumeAt(reader, header) : 0;
            RowWriter writer(request_.output, offset);
            if (offset == 0) writer.Write(header);
            Work(reader, writer);
        }
    } catch (const support::Error& error) {
        failure = error.Description();
    }
    Finish(std::move(failure));
    return report_;
}

std::istream& CleanRun::OpenInput() {
    if (IsStandardStream(request_.input)) return std::cin;
    file_.open(request_.input, std::ios::binary);
    if (!file_ || IsFolder(request_.input)) {
        throw support::Error(support::kErrorFileNotFound, L"cannot read " + support::FromPath(request_.input));
    }
    inputSize_ = FileLength(request_.input).value_or(0); // a pipe has none
    return file_;
}

bool CleanRun::MayWrite() {
    if (IsStandardStream(request_.output)) {
        if (!request_.resume) return true;
        report_.End(Outcome::WrongCall, L"--resume needs an output file");
    } else if (IsSameFile(request_.input, request_.output)) {
        report_.End(Outcome::WrongCall, L"input and output are the same file");
    } else if (!request_.resume && !request_.overwrite && FileLength(request_.output)) {
        report_.End(Outcome::WrongCall,
                    support::FromPath(request_.output) + L" exists: --resume continues it, --overwrite replaces it");
    } else {
        return true;
    }
    return false;
}

bool CleanRun::FindColumns(const CsvReader& reader, const std::vector<std::string>& names) {
    const CsvFormat& format = reader.Format();
    const auto postcode = FindColumn(names, request_.postcodeColumn, format);
    columns_.house = request_.houseColumn.empty() ? std::nullopt : FindColumn(names, request_.houseColumn, format);
    columns_.count = names.size();
    columns_.format = format;
    const bool houseMissing = !request_.houseColumn.empty() && !columns_.house;
    if (postcode && !houseMissing) {
        columns_.postcode = *postcode;
        return true;
    }
    std::wstring message =
        L"there is no column \"" + (postcode ? request_.houseColumn : request_.postcodeColumn) + L"\"; the list has:";
    for (const std::string& name : names) message += L" \"" + CsvText(name, format) + L"\"";
    report_.End(Outcome::WrongCall, message);
    return false;
}

std::uint64_t CleanRun::ResumeAt(CsvReader& reader, const std::string& header) {
    const ResumePoint point = FindResumePoint(request_.output, header, reader.Format());
    SkipRows(reader, point);
    before_ = point.rows;
    return point.offset;
}

void CleanRun::Work(CsvReader& reader, RowWriter& writer) {
    CleanWorkers workers(request_.threads, columns_, request_.makeSource);
    ProgressLine progress(console_);
    bool ended = false;
    while (!StopRequested()) {
        while (!ended && workers.Pending() < 2 * static_cast<std::size_t>(request_.threads)) {
            CsvBatch batch;
            if (reader.Next(batch, request_.batchRows)) {
                workers.Submit(std::move(batch));
            } else {
                ended = true;
            }
        }
        if (workers.Pending() == 0) return;
        const CleanedRows cleaned = workers.Take();
        writer.Write(cleaned.bytes);
        total_.rows += cleaned.rows;
        for (std::size_t i = 0; i < total_.verdicts.size(); ++i) total_.verdicts[i] += cleaned.verdicts[i];
        progress.Show(total_.rows, reader.BytesRead(), inputSize_);
    }
    throw support::Error(support::kErrorInvalidCall, L"stopped");
}

void CleanRun::Finish(std::wstring failure) {
    std::vector<Cell> row = {static_cast<std::int64_t>(total_.rows)};
    for (const std::uint64_t count : total_.verdicts) row.emplace_back(static_cast<std::int64_t>(count));
    row.emplace_back(static_cast<std::int64_t>(before_));
    report_.Add(std::move(row));
    if (!failure.empty()) {
        if (!IsStandardStream(request_.output)) {
            failure += L"; " + std::to_wstring(before_ + total_.rows) +
                       L" rows are written; repeat the call with --resume to continue after them";
        }
        report_.End(Outcome::Failed, failure);
    } else if (total_.rows + before_ == 0) {
        report_.End(Outcome::Nothing, L"the list has no rows");
    }
}

} // namespace

Report Clean(Console& console, const CleanRequest& request) {
    return CleanRun(console, request).Run();
}

} // namespace quorvex::cli
