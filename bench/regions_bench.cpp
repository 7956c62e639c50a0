// What an allocation costs: the region's fast path beside the system heap and the standard
// library's bump allocator.
//
// Each iteration allocates a batch of blocks and then releases all of them, in bulk where the
// allocator can, so that every figure holds the whole life of a block. One word of each block is
// written, as any user would.
#include "alloclib/interface/default_region.h"

#include <benchmark/benchmark.h>

#include <array>
#include <cstdint>
#include <cstdlib>
#include <memory_resource>

namespace {

constexpr int batch = 10000;

void touch(void* block) {
    *static_cast<uint64_t*>(block) = 1;
    benchmark::DoNotOptimize(block);
}

void count(benchmark::State& state) {
    state.SetItemsProcessed(state.iterations() * batch);
}

void regionFastPath(benchmark::State& state) {
    const auto size = static_cast<uint64_t>(state.range(0));
    alloclib::startAllocators();
    for ([[maybe_unused]] auto _ : state) {
        alloclib::RegionGeneral* const region = alloclib::RegionGeneral::Create(0, "bench");
        for (int i = 0; i < batch; ++i) {
            touch(alloclib::allocate(*region, size, 8));
        }
        region->Destroy(true);
    }
    alloclib::finishAllocators();
    count(state);
}

void monotonicBuffer(benchmark::State& state) {
    const auto size = static_cast<size_t>(state.range(0));
    for ([[maybe_unused]] auto _ : state) {
        std::pmr::monotonic_buffer_resource resource;
        for (int i = 0; i < batch; ++i) {
            touch(resource.allocate(size, 8));
        }
    }
    count(state);
}

void heap(benchmark::State& state) {
    const auto size = static_cast<size_t>(state.range(0));
    static std::array<void*, batch> blocks;
    for ([[maybe_unused]] auto _ : state) {
        for (void*& block : blocks) {
            block = std::malloc(size);
            touch(block);
        }
        for (void* const block : blocks) {
            std::free(block);
        }
    }
    count(state);
}

// Allocation and discard in turn, with about a thousand blocks alive.
void regionDiscard(benchmark::State& state) {
    const auto size = static_cast<uint64_t>(state.range(0));
    alloclib::startAllocators();
    static std::array<void*, 1024> blocks;
    blocks.fill(nullptr);
    uint64_t step = 0;
    for ([[maybe_unused]] auto _ : state) {
        void*& place = blocks[step++ * 617 % blocks.size()];
        alloclib::defaultRegion().Discard(place, size, 8);
        place = alloclib::allocate(alloclib::defaultRegion(), size, 8);
        touch(place);
    }
    alloclib::finishAllocators();
    state.SetItemsProcessed(state.iterations());
}

void heapDiscard(benchmark::State& state) {
    const auto size = static_cast<size_t>(state.range(0));
    static std::array<void*, 1024> blocks;
    uint64_t step = 0;
    for ([[maybe_unused]] auto _ : state) {
        void*& place = blocks[step++ * 617 % blocks.size()];
        std::free(place);
        place = std::malloc(size);
        touch(place);
    }
    for (void*& block : blocks) {
        std::free(block);
        block = nullptr;
    }
    state.SetItemsProcessed(state.iterations());
}

void sizes(benchmark::internal::Benchmark* bench) {
    for (const int size : {16, 32, 64, 128, 256}) {
        bench->Arg(size);
    }
}

BENCHMARK(regionFastPath)->Apply(sizes);
BENCHMARK(monotonicBuffer)->Apply(sizes);
BENCHMARK(heap)->Apply(sizes);
BENCHMARK(regionDiscard)->Apply(sizes);
BENCHMARK(heapDiscard)->Apply(sizes);

} // namespace
