// The containers beside those of the standard library.
//
// Keys are visited in an order that memory does not follow; the same one for both sides.
#include "alloclib/interface/default_region.h"
#include "elfext/interface/array.h"
#include "elfext/interface/fast_array.h"
#include "elfext/interface/fast_hash_table.h"
#include "elfext/interface/sort.h"
#include "elfext/interface/stringlett.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace {

void count(benchmark::State& state) {
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

// --- Appending

void appendFastArray(benchmark::State& state) {
    alloclib::startAllocators();
    for ([[maybe_unused]] auto _ : state) {
        alloclib::RegionGeneral* const region = alloclib::RegionGeneral::Create(0, "bench");
        {
            elfext::fast_array<uint64_t> numbers(region);
            for (int64_t i = 0; i < state.range(0); ++i) {
                numbers.add(static_cast<uint64_t>(i));
            }
            benchmark::DoNotOptimize(numbers.begin());
        }
        region->Destroy(true);
    }
    alloclib::finishAllocators();
    count(state);
}

void appendArray(benchmark::State& state) {
    for ([[maybe_unused]] auto _ : state) {
        elfext::array<uint64_t> numbers;
        for (int64_t i = 0; i < state.range(0); ++i) {
            numbers.add(static_cast<uint64_t>(i));
        }
        benchmark::DoNotOptimize(numbers.begin());
    }
    count(state);
}

void appendVector(benchmark::State& state) {
    for ([[maybe_unused]] auto _ : state) {
        std::vector<uint64_t> numbers;
        for (int64_t i = 0; i < state.range(0); ++i) {
            numbers.push_back(static_cast<uint64_t>(i));
        }
        benchmark::DoNotOptimize(numbers.data());
    }
    count(state);
}

// --- Tables

std::vector<uint32_t> shuffledNumbers(int64_t size) {
    std::vector<uint32_t> numbers;
    std::minstd_rand random(1);
    for (int64_t i = 0; i < size; ++i) {
        numbers.push_back(static_cast<uint32_t>(i) * 7 + 13);
    }
    std::shuffle(numbers.begin(), numbers.end(), random);
    return numbers;
}

// Names as symbols have them.
std::vector<std::string> symbolNames(int64_t size) {
    std::vector<std::string> names;
    for (const uint32_t number : shuffledNumbers(size)) {
        names.push_back("_ZN7library6module" + std::to_string(number) + "Ev");
    }
    return names;
}

void insertTable(benchmark::State& state) {
    const std::vector<uint32_t> keys = shuffledNumbers(state.range(0));
    alloclib::startAllocators();
    for ([[maybe_unused]] auto _ : state) {
        alloclib::RegionGeneral* const region = alloclib::RegionGeneral::Create(0, "bench");
        {
            elfext::fast_hash_table<uint32_t, uint32_t> table(region);
            for (const uint32_t key : keys) {
                table.set(key, key);
            }
            benchmark::DoNotOptimize(table.getCount());
        }
        region->Destroy(true);
    }
    alloclib::finishAllocators();
    count(state);
}

void insertUnorderedMap(benchmark::State& state) {
    const std::vector<uint32_t> keys = shuffledNumbers(state.range(0));
    for ([[maybe_unused]] auto _ : state) {
        std::unordered_map<uint32_t, uint32_t> table;
        for (const uint32_t key : keys) {
            table[key] = key;
        }
        benchmark::DoNotOptimize(table.size());
    }
    count(state);
}

void lookUpTable(benchmark::State& state) {
    const std::vector<uint32_t> keys = shuffledNumbers(state.range(0));
    alloclib::startAllocators();
    {
        elfext::fast_hash_table<uint32_t, uint32_t> table(&alloclib::defaultRegion());
        for (uint32_t number = 0; number < keys.size(); ++number) {
            table.set(number * 7 + 13, number);
        }
        for ([[maybe_unused]] auto _ : state) {
            uint64_t sum = 0;
            for (const uint32_t key : keys) {
                sum += table.get(key);
            }
            benchmark::DoNotOptimize(sum);
        }
    }
    alloclib::finishAllocators();
    count(state);
}

void lookUpUnorderedMap(benchmark::State& state) {
    const std::vector<uint32_t> keys = shuffledNumbers(state.range(0));
    std::unordered_map<uint32_t, uint32_t> table;
    for (uint32_t number = 0; number < keys.size(); ++number) {
        table[number * 7 + 13] = number;
    }
    for ([[maybe_unused]] auto _ : state) {
        uint64_t sum = 0;
        for (const uint32_t key : keys) {
            sum += table.find(key)->second;
        }
        benchmark::DoNotOptimize(sum);
    }
    count(state);
}

// By name, hashing included.
void insertNamesTable(benchmark::State& state) {
    const std::vector<std::string> names = symbolNames(state.range(0));
    alloclib::startAllocators();
    for ([[maybe_unused]] auto _ : state) {
        alloclib::RegionGeneral* const region = alloclib::RegionGeneral::Create(0, "bench");
        {
            elfext::fast_hash_table<elfext::Stringlett, uint32_t> table(region);
            for (const std::string& name : names) {
                table.set(name.c_str(), 1);
            }
            benchmark::DoNotOptimize(table.getCount());
        }
        region->Destroy(true);
    }
    alloclib::finishAllocators();
    count(state);
}

void insertNamesUnorderedMap(benchmark::State& state) {
    const std::vector<std::string> names = symbolNames(state.range(0));
    for ([[maybe_unused]] auto _ : state) {
        std::unordered_map<std::string_view, uint32_t> table;
        for (const std::string& name : names) {
            table[name.c_str()] = 1;
        }
        benchmark::DoNotOptimize(table.size());
    }
    count(state);
}

void lookUpNamesTable(benchmark::State& state) {
    const std::vector<std::string> names = symbolNames(state.range(0));
    const std::vector<std::string> asked = symbolNames(state.range(0)); // equal, not the same
    alloclib::startAllocators();
    {
        elfext::fast_hash_table<elfext::Stringlett, uint32_t> table(&alloclib::defaultRegion());
        for (const std::string& name : names) {
            table.set(name.c_str(), 1);
        }
        for ([[maybe_unused]] auto _ : state) {
            uint64_t sum = 0;
            for (const std::string& name : asked) {
                sum += table.get(name.c_str());
            }
            benchmark::DoNotOptimize(sum);
        }
    }
    alloclib::finishAllocators();
    count(state);
}

void lookUpNamesUnorderedMap(benchmark::State& state) {
    const std::vector<std::string> names = symbolNames(state.range(0));
    const std::vector<std::string> asked = symbolNames(state.range(0)); // equal, not the same
    std::unordered_map<std::string_view, uint32_t> table;
    for (const std::string& name : names) {
        table[name] = 1;
    }
    for ([[maybe_unused]] auto _ : state) {
        uint64_t sum = 0;
        for (const std::string& name : asked) {
            sum += table.find(name.c_str())->second;
        }
        benchmark::DoNotOptimize(sum);
    }
    count(state);
}

// --- Sorting pointers by what they point to

std::vector<const uint32_t*> pointersTo(const std::vector<uint32_t>& numbers) {
    std::vector<const uint32_t*> pointers;
    pointers.reserve(numbers.size());
    for (const uint32_t& number : numbers) {
        pointers.push_back(&number);
    }
    return pointers;
}

int compareNumbers(const void* left, const void* right, void* /*context*/) {
    const uint32_t leftNumber = **static_cast<const uint32_t* const*>(left);
    const uint32_t rightNumber = **static_cast<const uint32_t* const*>(right);
    return leftNumber < rightNumber ? -1 : leftNumber > rightNumber ? 1 : 0;
}

void sortMerge(benchmark::State& state) {
    const std::vector<uint32_t> numbers = shuffledNumbers(state.range(0));
    const std::vector<const uint32_t*> unsorted = pointersTo(numbers);
    for ([[maybe_unused]] auto _ : state) {
        std::vector<const uint32_t*> pointers = unsorted;
        elfext::mergeSort(pointers.data(), pointers.size(), sizeof pointers[0], compareNumbers,
                          nullptr);
        benchmark::DoNotOptimize(pointers.data());
    }
    count(state);
}

void sortStable(benchmark::State& state) {
    const std::vector<uint32_t> numbers = shuffledNumbers(state.range(0));
    const std::vector<const uint32_t*> unsorted = pointersTo(numbers);
    for ([[maybe_unused]] auto _ : state) {
        std::vector<const uint32_t*> pointers = unsorted;
        std::stable_sort(
            pointers.begin(), pointers.end(),
            [](const uint32_t* left, const uint32_t* right) { return *left < *right; });
        benchmark::DoNotOptimize(pointers.data());
    }
    count(state);
}

void sizes(benchmark::internal::Benchmark* bench) {
    bench->Arg(10)->Arg(10000)->Arg(1000000);
}

BENCHMARK(appendFastArray)->Apply(sizes);
BENCHMARK(appendArray)->Apply(sizes);
BENCHMARK(appendVector)->Apply(sizes);
BENCHMARK(insertTable)->Apply(sizes);
BENCHMARK(insertUnorderedMap)->Apply(sizes);
BENCHMARK(lookUpTable)->Apply(sizes);
BENCHMARK(lookUpUnorderedMap)->Apply(sizes);
BENCHMARK(insertNamesTable)->Apply(sizes);
BENCHMARK(insertNamesUnorderedMap)->Apply(sizes);
BENCHMARK(lookUpNamesTable)->Apply(sizes);
BENCHMARK(lookUpNamesUnorderedMap)->Apply(sizes);
BENCHMARK(sortMerge)->Apply(sizes);
BENCHMARK(sortStable)->Apply(sizes);

} // namespace
