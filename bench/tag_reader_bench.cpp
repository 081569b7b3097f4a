// Reading tags out of a reply of 10 million characters, beside a plain search for the same text in the same bytes.

#include "object/stored_list.h"
#include "object/tag_reader.h"

#include <benchmark/benchmark.h>

#include <cstring>
#include <cwchar>
#include <string>

namespace {

using namespace quorvex;

constexpr std::size_t kCharacters = 10'000'000;

const std::wstring& Reply() {
    static const std::wstring reply = [] {
        std::wstring text = L"<confirm>yes</confirm><addressdata>";
        for (int i = 1; text.size() < kCharacters; ++i) {
            text += L"  <record>\r\n    <id>PE132QL_" + std::to_wstring(i) + L"_F</id>\r\n    <line>" +
                    std::to_wstring(i) +
                    L" QUARRY ROAD UPWICK WISBECH CAMBRIDGESHIRE PE13 2QL    </line>\r\n  </record>\r\n";
        }
        return text + L"</addressdata>";
    }();
    return reply;
}

void CountBytes(benchmark::State& state) {
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) *
                            static_cast<std::int64_t>(Reply().size() * sizeof(wchar_t)));
}

// A tag that is not there: the whole reply is looked at.
void TagReaderAbsentTag(benchmark::State& state) {
    for (auto _ : state) benchmark::DoNotOptimize(object::FindBetweenTags(Reply(), L"<lint>", L"</lint>"));
    CountBytes(state);
}
BENCHMARK(TagReaderAbsentTag)->Unit(benchmark::kMillisecond);

void PeerMemmemAbsentTag(benchmark::State& state) {
    static constexpr wchar_t kTag[] = L"<lint>";
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            memmem(Reply().data(), Reply().size() * sizeof(wchar_t), kTag, sizeof kTag - sizeof *kTag));
    }
    CountBytes(state);
}
BENCHMARK(PeerMemmemAbsentTag)->Unit(benchmark::kMillisecond);

void PeerWcsstrAbsentTag(benchmark::State& state) {
    for (auto _ : state) benchmark::DoNotOptimize(std::wcsstr(Reply().c_str(), L"<lint>"));
    CountBytes(state);
}
BENCHMARK(PeerWcsstrAbsentTag)->Unit(benchmark::kMillisecond);

// Every record and its two elements, one after the other.
void TagReaderWalk(benchmark::State& state) {
    std::size_t characters = 0;
    for (auto _ : state) {
        state.PauseTiming();
        object::StoredList list;
        list.Assign(Reply());
        state.ResumeTiming();
        for (std::wstring record; !(record = list.TakeBetween(L"<record>", L"</record>")).empty();) {
            characters += object::ReadElement(record, L"id").size() + object::ReadElement(record, L"line").size();
        }
    }
    benchmark::DoNotOptimize(characters);
    CountBytes(state);
}
BENCHMARK(TagReaderWalk)->Unit(benchmark::kMillisecond);

// The same pieces found by the C library, without taking them out.
void PeerMemmemWalk(benchmark::State& state) {
    const std::wstring_view tags[] = {L"<record>", L"<id>", L"</id>", L"<line>", L"</line>", L"</record>"};
    for (auto _ : state) {
        const char* at = reinterpret_cast<const char*>(Reply().data());
        const char* const end = at + Reply().size() * sizeof(wchar_t);
        while (at != nullptr) {
            for (const std::wstring_view tag : tags) {
                const std::size_t size = tag.size() * sizeof(wchar_t);
                const void* const found = memmem(at, static_cast<std::size_t>(end - at), tag.data(), size);
                at = found == nullptr ? nullptr : static_cast<const char*>(found) + size;
                if (at == nullptr) break;
            }
        }
    }
    CountBytes(state);
}
BENCHMARK(PeerMemmemWalk)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
