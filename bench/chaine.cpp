// Chaine against std::string on the operations that dominate the
// applications: making and dropping short texts, copies, assignment,
// concatenation and equality.
#include <string>

#include "nvk/core/chaine.h"
#include "ratio.h"

namespace {

std::string TextOf(int length) {
    return std::string(static_cast<std::size_t>(length), 'k');
}

template <class String>
void ConstructDestroy(benchmark::State& state) {
    const std::string text = TextOf(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        String value(text.c_str());
        benchmark::DoNotOptimize(value);
    }
}

template <class String>
void Copy(benchmark::State& state) {
    const String source(TextOf(static_cast<int>(state.range(0))).c_str());
    for (auto _ : state) {
        String copy(source);
        benchmark::DoNotOptimize(copy);
    }
}

template <class String>
void Assign(benchmark::State& state) {
    const String first(TextOf(static_cast<int>(state.range(0))).c_str());
    const String second(TextOf(static_cast<int>(state.range(0))).c_str());
    String target(first);
    for (auto _ : state) {
        target = second;
        benchmark::DoNotOptimize(target);
        target = first;
        benchmark::DoNotOptimize(target);
    }
}

template <class String>
void Concatenate(benchmark::State& state) {
    const String left(TextOf(static_cast<int>(state.range(0)) / 2).c_str());
    const String right(TextOf(static_cast<int>(state.range(0)) / 2).c_str());
    for (auto _ : state) {
        String joined = left + right;
        benchmark::DoNotOptimize(joined);
    }
}

template <class String>
void Equality(benchmark::State& state) {
    const std::string text = TextOf(static_cast<int>(state.range(0)));
    const String a(text.c_str());
    const String b(text.c_str());
    for (auto _ : state) {
        bool same = a == b;
        benchmark::DoNotOptimize(same);
    }
}

template <void (*Chaine_)(benchmark::State&), void (*Peer)(benchmark::State&)>
void Register(const char* name) {
    for (int length : {8, 32, 64, 200}) {
        const std::string base = std::string(name) + " " + std::to_string(length) + " bytes | ";
        benchmark::RegisterBenchmark((base + "Chaine").c_str(), Chaine_)->Arg(length);
        benchmark::RegisterBenchmark((base + "std::string").c_str(), Peer)->Arg(length);
    }
}

}  // namespace

int main(int argc, char** argv) {
    Register<ConstructDestroy<Chaine>, ConstructDestroy<std::string>>("construct+destroy");
    Register<Copy<Chaine>, Copy<std::string>>("copy");
    Register<Assign<Chaine>, Assign<std::string>>("assign");
    Register<Concatenate<Chaine>, Concatenate<std::string>>("concatenate");
    Register<Equality<Chaine>, Equality<std::string>>("equality");
    return nvk::bench::RunWithRatios(argc, argv, "Chaine");
}
