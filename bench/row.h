// A row of the table: one job on one text, done by several entrants one after another over the same memory. Its
// benchmarks are named job/text/size/entrant.
#pragma once

#include <benchmark/benchmark.h>
#include <functional>
#include <memory>
#include <string>

namespace kxbench {

// Texts are many and large, so a row makes its input when the first of its entrants runs.
template <class Input> class Lazy {
  public:
    explicit Lazy(std::function<Input()> make) : make_(std::move(make)) {}
    Input &get() {
        if (!input_) input_ = std::make_unique<Input>(make_());
        return *input_;
    }

  private:
    std::function<Input()> make_;
    std::unique_ptr<Input> input_;
};

template <class Input> class Row {
  public:
    Row(const std::string &job, const std::string &text, std::size_t size, std::function<Input()> make)
        : name_(job + "/" + text + "/" + std::to_string(size)),
          input_(std::make_shared<Lazy<Input>>(std::move(make))) {}

    // `run(input)` does the job once and gives a result; `is_right(input, result)` tells whether result and output
    // are what they should be. Both are template arguments so that the timed loop calls nothing but the job itself.
    // Names of floors begin with "floor-": what no entrant can be expected to beat.
    template <class Run, class IsRight> Row &entrant(const std::string &name, Run run, IsRight is_right) {
        auto timed = [input = input_, run, is_right](benchmark::State &state) {
            Input &in = input->get();
            in.clear_output(); // it may be right already, from another entrant
            if (!is_right(in, run(in))) {
                state.SkipWithError("wrong result, not timed");
                return;
            }
            for ([[maybe_unused]] auto _ : state) {
                auto result = run(in);
                benchmark::DoNotOptimize(result);
                benchmark::ClobberMemory();
            }
        };
        benchmark::RegisterBenchmark((name_ + "/" + name).c_str(), timed);
        return *this;
    }

  private:
    std::string name_;
    std::shared_ptr<Lazy<Input>> input_;
};

} // namespace kxbench
