// Measures the name index of the symbol table: adding and finding names that differ in digits only, as the names of PLC
// programs do, compared with std::unordered_map with case-folded keys and with a plain walk through the chains.

#include "symbols/NameIndex.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <map>
#include <numeric>
#include <random>
#include <string>
#include <unordered_map>
#include <vector>

namespace {

constexpr char const* kFastest = "fastest";

using CaseTable = std::array<char, 256>;

CaseTable makeCaseTable(int (*convert)(int)) {
    CaseTable table{};
    for (std::size_t i = 0; i < table.size(); ++i) {
        table[i] = static_cast<char>(convert(static_cast<int>(i)));
    }
    return table;
}

unsigned char byteOf(char character) {
    return static_cast<unsigned char>(character);
}

std::string nameOf(std::size_t number) {
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "Application.Line%02zu.Station%02zu.Value%02zu", number / 10'000,
                  number / 100 % 100, number % 100);
    return text.data();
}

/** The names of a program and the same names as a panel project uses them: in any order and other case. */
struct Names {
    std::vector<std::string> declared;
    std::vector<std::string> asked;
};

Names const& names(std::size_t count) {
    static std::map<std::size_t, Names> made;
    Names& names = made[count];
    if (names.declared.empty()) {
        for (std::size_t i = 0; i < count; ++i) {
            names.declared.push_back(nameOf(i));
        }
        CaseTable const upper = makeCaseTable(std::toupper);
        std::vector<std::size_t> order(count);
        std::iota(order.begin(), order.end(), std::size_t{0});
        std::shuffle(order.begin(), order.end(), std::mt19937(1));
        for (std::size_t const number : order) {
            std::string const& name = names.declared[number];
            std::transform(name.begin(), name.end(), std::back_inserter(names.asked.emplace_back()),
                           [&](char c) { return upper[byteOf(c)]; });
        }
    }
    return names;
}

/** Only its address matters. */
void* someValue() {
    static int value = 0;
    return &value;
}

/** The index of the symbol table. */
class Index {
public:
    explicit Index(std::size_t count)
        : table_(static_cast<int>(count * 3 / 2), false, static_cast<std::uint32_t>(count)) {}

    bool add(std::string const& name) { return table_.add(name.c_str(), someValue()); }
    void* find(std::string const& name) {
        auto const* const node = table_.find(name.c_str());
        return node != nullptr ? node->value : nullptr;
    }

private:
    _VELK::RtsHashTag table_;
};

/** The standard library's table, with reserved room and no allocation for a look-up. */
class FoldedMap {
public:
    explicit FoldedMap(std::size_t count) { map_.reserve(count); }

    bool add(std::string const& name) { return map_.emplace(fold(name), someValue()).second; }
    void* find(std::string const& name) {
        auto const entry = map_.find(fold(name));
        return entry != map_.end() ? entry->second : nullptr;
    }

private:
    std::string const& fold(std::string const& name) {
        folded_.clear();
        std::transform(name.begin(), name.end(), std::back_inserter(folded_),
                       [&](char c) { return lower_[byteOf(c)]; });
        return folded_;
    }

    CaseTable lower_ = makeCaseTable(std::tolower);
    std::string folded_;
    std::unordered_map<std::string, void*> map_;
};

/** The same buckets as the index, walked link by link. */
class ChainWalk {
public:
    explicit ChainWalk(std::size_t count) : buckets_(count * 3 / 2) { nodes_.reserve(count); }

    bool add(std::string const& name) {
        Node** end = endOrMatch(name.c_str());
        if (*end != nullptr) {
            return false;
        }
        nodes_.push_back({.key = name.c_str(), .value = someValue(), .next = nullptr});
        *end = &nodes_.back();
        return true;
    }

    void* find(std::string const& name) {
        Node const* const node = *endOrMatch(name.c_str());
        return node != nullptr ? node->value : nullptr;
    }

private:
    struct Node {
        char const* key;
        void* value;
        Node* next;
    };

    Node** endOrMatch(char const* key) {
        std::size_t sum = 0;
        for (char const* c = key; *c != '\0'; ++c) {
            sum += byteOf(upper_[byteOf(*c)]);
        }
        Node** link = &buckets_[sum % buckets_.size()];
        while (*link != nullptr && !isEqual(key, (*link)->key)) {
            link = &(*link)->next;
        }
        return link;
    }

    bool isEqual(char const* a, char const* b) const {
        for (; lower_[byteOf(*a)] == lower_[byteOf(*b)]; ++a, ++b) {
            if (*a == '\0') {
                return true;
            }
        }
        return false;
    }

    CaseTable lower_ = makeCaseTable(std::tolower);
    CaseTable upper_ = makeCaseTable(std::toupper);
    std::vector<Node*> buckets_;
    std::vector<Node> nodes_;
};

/** Makes a table and adds every name. */
template <typename Table>
void add(benchmark::State& state) {
    auto const count = static_cast<std::size_t>(state.range(0));
    std::vector<std::string> const& declared = names(count).declared;
    for ([[maybe_unused]] auto iteration : state) {
        Table table(count);
        std::size_t added = 0;
        for (std::string const& name : declared) {
            added += table.add(name) ? 1U : 0U;
        }
        if (added != count) {
            state.SkipWithError("a name was refused");
            break;
        }
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

/** Finds every name once, in any order and other case. */
template <typename Table>
void find(benchmark::State& state) {
    auto const count = static_cast<std::size_t>(state.range(0));
    Names const& all = names(count);
    Table table(count);
    for (std::string const& name : all.declared) {
        table.add(name);
    }
    for ([[maybe_unused]] auto iteration : state) {
        std::size_t found = 0;
        for (std::string const& name : all.asked) {
            found += table.find(name) == someValue() ? 1U : 0U;
        }
        if (found != count) {
            state.SkipWithError("a name was not found");
            break;
        }
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

/** Other work on the machine only adds time, so the fastest of several repetitions is the most accurate. */
double fastest(std::vector<double> const& times) {
    return *std::min_element(times.begin(), times.end());
}

void allSizes(benchmark::internal::Benchmark* benchmark) {
    benchmark->Arg(1'000)->Arg(10'000)->Arg(100'000)->Unit(benchmark::kMicrosecond);
    benchmark->ComputeStatistics(kFastest, fastest)->Repetitions(7)->ReportAggregatesOnly();
}

/** Walking through chains of thousands of links takes too long at the largest size. */
void bearableSizes(benchmark::internal::Benchmark* benchmark) {
    benchmark->Arg(1'000)->Arg(10'000)->Unit(benchmark::kMicrosecond);
    benchmark->ComputeStatistics(kFastest, fastest)->Repetitions(7)->ReportAggregatesOnly();
}

BENCHMARK(add<Index>)->Name("add/index")->Apply(allSizes);
BENCHMARK(add<FoldedMap>)->Name("add/unordered_map")->Apply(allSizes);
BENCHMARK(add<ChainWalk>)->Name("add/chain_walk")->Apply(bearableSizes);
BENCHMARK(find<Index>)->Name("find/index")->Apply(allSizes);
BENCHMARK(find<FoldedMap>)->Name("find/unordered_map")->Apply(allSizes);
BENCHMARK(find<ChainWalk>)->Name("find/chain_walk")->Apply(bearableSizes);

/** Shows the results as usual and, at the end, each as a multiple of std::unordered_map's. */
class RatioReporter : public benchmark::ConsoleReporter {
public:
    void ReportRuns(std::vector<Run> const& runs) override {
        benchmark::ConsoleReporter::ReportRuns(runs);
        for (Run const& run : runs) {
            if (!run.error_occurred && run.aggregate_name == kFastest) {
                times_[run.run_name.function_name + "/" + run.run_name.args] = run.GetAdjustedCPUTime();
            }
        }
    }

    void Finalize() override {
        benchmark::ConsoleReporter::Finalize();
        std::printf("\nCPU time as a multiple of std::unordered_map's:\n");
        for (auto const& [name, time] : times_) {
            std::string baseline = name;
            std::size_t const table = baseline.find('/') + 1;
            baseline.replace(table, baseline.find('/', table) - table, "unordered_map");
            auto const found = times_.find(baseline);
            if (found != times_.end() && baseline != name) {
                std::printf("  %-24s %8.2f\n", name.c_str(), time / found->second);
            }
        }
    }

private:
    std::map<std::string, double> times_;
};

} // namespace

int main(int argumentCount, char** arguments) {
    benchmark::Initialize(&argumentCount, arguments);
    if (benchmark::ReportUnrecognizedArguments(argumentCount, arguments)) {
        return EXIT_FAILURE;
    }
    RatioReporter reporter;
    std::size_t const run = benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return run != 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
