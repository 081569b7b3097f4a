// A host's walk over the lines of a list reply. Time for one line must not grow with the length of the list.

#include "object/stored_list.h"
#include "object/tag_reader.h"

#include <benchmark/benchmark.h>

#include <string>

namespace {

using namespace quorvex;

std::wstring ListOf(std::int64_t lines) {
    std::wstring text;
    for (std::int64_t i = 1; i <= lines; ++i) {
        text += L"  <record>\r\n    <id>PE132QL_" + std::to_wstring(i) + L"_F</id>\r\n    <line>" + std::to_wstring(i) +
                L" QUARRY ROAD UPWICK WISBECH CAMBRIDGESHIRE PE13 2QL    </line>\r\n  </record>\r\n";
    }
    return text;
}

void StoredListWalk(benchmark::State& state) {
    const std::wstring text = ListOf(state.range(0));
    for (auto _ : state) {
        object::StoredList list;
        list.Assign(text);
        for (std::int64_t i = 0; i < state.range(0); ++i) {
            benchmark::DoNotOptimize(list.TakeBetween(L"<record>", L"</record>"));
        }
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
    state.SetComplexityN(state.range(0));
}
BENCHMARK(StoredListWalk)->Arg(5000)->Arg(10000)->Arg(20000)->Arg(40000)->Unit(benchmark::kMillisecond)->Complexity();

// What the walk would cost if each line were cut off the front of the text.
void PeerCutOffTheFront(benchmark::State& state) {
    const std::wstring text = ListOf(state.range(0));
    for (auto _ : state) {
        std::wstring html = text;
        for (std::int64_t i = 0; i < state.range(0); ++i) {
            benchmark::DoNotOptimize(object::GetBetweenTags(L"<record>", html, L"</record>", true));
        }
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
    state.SetComplexityN(state.range(0));
}
BENCHMARK(PeerCutOffTheFront)->Arg(5000)->Arg(10000)->Unit(benchmark::kMillisecond)->Complexity();

} // namespace

BENCHMARK_MAIN();
