// Ranking a million points: adding them, and sorting them beside std::sort on the same texts.

#include "lookups/nearest.h"
#include "support/quick_sort.h"
#include "testing/fake_platform.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

namespace {

using namespace quorvex;

constexpr std::int32_t kPoints = 1'000'000;

struct Point {
    double longitude = 0;
    double latitude = 0;
};

const std::vector<Point>& Points() {
    static const std::vector<Point> points = [] {
        std::mt19937_64 random(20260307);
        std::uniform_real_distribution<double> longitude(-5, 1);
        std::uniform_real_distribution<double> latitude(50, 58);
        std::vector<Point> made(kPoints);
        for (Point& point : made) point = {longitude(random), latitude(random)};
        return made;
    }();
    return points;
}

void Fill(object::Quorvex& object) {
    object.nearest = {};
    object.nearest.homeLongitude = -1.5;
    object.nearest.homeLatitude = 53.4;
    object.nearest.maximumDistance = 100000;
    object.nearest.entries.assign(1, {});
    for (const Point& point : Points())
        lookups::Nearest_AddToList(object, point.longitude, point.latitude, L"Branch", L"", L"");
}

const std::vector<std::wstring>& Texts() {
    static const std::vector<std::wstring> texts = [] {
        testing::FakePlatform platform;
        object::Quorvex object(platform, platform);
        Fill(object);
        object.nearest.entries.resize(static_cast<std::size_t>(kPoints) + 1);
        return object.nearest.entries;
    }();
    return texts;
}

void NearestAdd(benchmark::State& state) {
    testing::FakePlatform platform;
    object::Quorvex object(platform, platform);
    for (auto _ : state) Fill(object);
    state.SetItemsProcessed(state.iterations() * kPoints);
}
BENCHMARK(NearestAdd)->Unit(benchmark::kMillisecond);

void NearestSort(benchmark::State& state) {
    for (auto _ : state) {
        state.PauseTiming();
        std::vector<std::wstring> texts = Texts();
        state.ResumeTiming();
        support::QuickSort(texts, 0, kPoints);
        if (!std::is_sorted(texts.begin(), texts.end())) state.SkipWithError("not sorted");
    }
    state.SetItemsProcessed(state.iterations() * kPoints);
}
BENCHMARK(NearestSort)->Unit(benchmark::kMillisecond);

void PeerStdSort(benchmark::State& state) {
    for (auto _ : state) {
        state.PauseTiming();
        std::vector<std::wstring> texts = Texts();
        state.ResumeTiming();
        std::sort(texts.begin(), texts.end());
        if (!std::is_sorted(texts.begin(), texts.end())) state.SkipWithError("not sorted");
    }
    state.SetItemsProcessed(state.iterations() * kPoints);
}
BENCHMARK(PeerStdSort)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
