// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
// Runs the work in the way of every contender; bench.py makes tables of what this prints.
//
//   measure check FOLDER OUTPUT           whether all contenders give right answers
//   measure time FOLDER OUTPUT SECONDS    CPU time, so long for each kind of work
//   measure flush FOLDER OUTPUT           seconds of saves, and of the flush that ends each
//   measure once FOLDER OUTPUT [LINES]    each once, between marks, for tools that count; keyfiles
//                                         up to so many lines
//
// Not with Google Benchmark: it takes the repetitions of its benchmarks in any order, but one after
// the other. Here all contenders take turns within a round of a few milliseconds, so that whatever
// slows the machine down slows them all, and it is the ratios within a round that are compared.
#include <fcntl.h>
#include <unistd.h>
#include <valgrind/callgrind.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string>

#include "base/whole_file.h"
#include "heap.h"
#include "work.h"

// The quote clean-up's pause takes no CPU time, but half an hour of this program's.
extern "C" int nanosleep(const timespec* /*duration*/, timespec* /*rest*/) { return 0; }

namespace {

FILE* output = nullptr;

double cpuSeconds() {
  timespec time{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

/** A contender's part in a round: a few turns in a row. */
struct Runner {
  const Contender* contender;
  std::string path;
  unsigned turns = 1;
  unsigned turn = 0;

  double secondsPerTurn(Work& work) {
    const double start = cpuSeconds();
    for (unsigned i = 0; i < turns; ++i) work.run(*contender, path, turn++);
    return (cpuSeconds() - start) / turns;
  }
};

std::vector<Runner> runnersFor(Work& work) {
  std::vector<Runner> runners;
  for (const Contender& contender : allContenders()) {
    if (!work.suits(contender) || work.lines > contender.maxLines) continue;
    runners.push_back({&contender, work.prepare(contender)});
  }
  return runners;
}

void print(const Work& work, const Contender& contender, const std::string& numbers) {
  std::fprintf(output, "%s\t%d\t%s\t%s\n", work.name.c_str(), work.lines, contender.name,
               numbers.c_str());
  std::fflush(output);
}

/** Prints the nanoseconds of one turn in each round, on one line. */
void measureTime(Work& work, double budget) {
  constexpr double SLICE = 0.5e-3;
  constexpr unsigned MAX_ROUNDS = 200;
  constexpr unsigned WARM_UP = 4;
  std::vector<Runner> runners = runnersFor(work);
  std::vector<std::string> numbers(runners.size());
  double round = 0;
  for (Runner& runner : runners) {
    double seconds = runner.secondsPerTurn(work);
    if (seconds < budget / 100) {
      runner.turns = WARM_UP;
      seconds = runner.secondsPerTurn(work);
      // An even number: both values of a write take part alike.
      runner.turns = 2 * static_cast<unsigned>(std::clamp(SLICE / seconds / 2, 1.0, 1000.0));
    }
    round += seconds * runner.turns;
  }
  const auto rounds = static_cast<unsigned>(std::clamp(budget / round, 3.0, double{MAX_ROUNDS}));
  for (unsigned i = 0; i < rounds; ++i) {
    for (std::size_t j = 0; j < runners.size(); ++j) {
      // Each round starts with another one, so that nobody always follows the same neighbour.
      const std::size_t next = (i + j) % runners.size();
      const double seconds = runners[next].secondsPerTurn(work);
      numbers[next] += std::to_string(seconds * 1e9) + " ";
    }
  }
  for (std::size_t i = 0; i < runners.size(); ++i) print(work, *runners[i].contender, numbers[i]);
}

double wallSeconds() {
  timespec time{};
  clock_gettime(CLOCK_MONOTONIC, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

/** A save by our own functions, and the flush that ends it, several times: here the disk counts. */
void measureFlush(Work& work) {
  constexpr unsigned SAVES = 40;
  for (Runner& runner : runnersFor(work)) {
    if (std::strcmp(runner.contender->name, "ours") != 0) continue;
    std::string numbers;
    for (unsigned turn = 0; turn < SAVES; ++turn) {
      const double start = wallSeconds();
      work.run(*runner.contender, runner.path, turn);
      const double saved = wallSeconds();
      flushToDisk(runner.path);
      numbers += std::to_string(saved - start) + " " + std::to_string(wallSeconds() - saved) + " ";
    }
    print(work, *runner.contender, numbers);
  }
}

/** A system call that strace shows between those of the work. */
void mark(const std::string& what) { (void)!access(("mark:" + what).c_str(), F_OK); }

void measureOnce(Work& work) {
  for (Runner& runner : runnersFor(work)) {
    const std::string label =
        work.name + "\t" + std::to_string(work.lines) + "\t" + runner.contender->name;
    // Whatever is done the first time only is done now.
    for (int i = 0; i < 2; ++i) work.run(*runner.contender, runner.path, runner.turn++);

    mark(label);
    if (resetHeapUse != nullptr) resetHeapUse();
    CALLGRIND_ZERO_STATS;
    work.run(*runner.contender, runner.path, runner.turn);
    CALLGRIND_DUMP_STATS_AT(label.c_str());
    const HeapUse heap = heapUse != nullptr ? heapUse() : HeapUse{};
    mark("end");
    print(work, *runner.contender,
          std::to_string(heap.calls) + " " + std::to_string(heap.unitCalls) + " " +
              std::to_string(heap.peak));
  }
}

bool check(Work& work) {
  bool right = true;
  for (Runner& runner : runnersFor(work)) {
    for (unsigned turn = 0; turn < 2; ++turn) {
      work.run(*runner.contender, runner.path, turn);
      const bool good = work.isRight(*runner.contender, runner.path, turn);
      if (!good) print(work, *runner.contender, "wrong");
      right = right && good;
    }
  }
  return right;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 4) {
    std::fprintf(stderr, "usage: measure check|time|flush|once FOLDER OUTPUT [NUMBER]\n");
    return 2;
  }
  output = std::fopen(argv[3], "we");
  const std::string what = argv[1];
  const double number = argc > 4 ? std::atof(argv[4]) : 1e9;
  // The program's own lines go nowhere, at the price of the system calls.
  (void)!freopen("/dev/null", "w", stdout);
  bool right = true;
  for (const auto& work : allWork(argv[2])) {
    if (what == "check") right = check(*work) && right;
    if (what == "time") measureTime(*work, number);
    if (what == "flush" && work->name.rfind("save", 0) == 0) measureFlush(*work);
    if (what == "once" && work->lines <= number) measureOnce(*work);
  }
  std::fclose(output);
  return right ? 0 : 1;
}
