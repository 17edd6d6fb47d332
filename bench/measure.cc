// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
// Does the work of each row in the way of every contender, on files below a folder:
//   measure check FOLDER           fails when one gives a wrong answer
//   measure time FOLDER SECONDS    prints nanoseconds of CPU time, so long for each row
//   measure once FOLDER            each once, between marks, for tools that count
//
// Not with Google Benchmark: it takes the repetitions of its benchmarks in any order, but one after
// the other. Here all contenders take turns within a round of a few milliseconds, so that whatever
// slows the machine down slows them all, and it is the ratios within a round that are compared.
#include <fcntl.h>
#include <unistd.h>
#include <valgrind/callgrind.h>

#include <array>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>

#include "contender.h"
#include "rows.h"

namespace {

/** A contender at work on a row. */
struct Runner {
  const Contender* contender;
  const Row* row;
  std::string path;
  std::array<char, 100> value{};
  unsigned turns = 1;  // in a round
  unsigned turn = 0;

  void run() {
    const std::string& wanted = row->values[turn++ % row->values.size()];
    if (row->writes())
      contender->write(path.c_str(), row->section.c_str(), row->key.c_str(), wanted.c_str());
    else
      read();
  }

  bool read() {
    return contender->read(path.c_str(), row->section.c_str(), row->key.c_str(), value.data(),
                           value.size());
  }

  /** Whether the file holds what the last turn read or wrote. */
  bool isRight() { return read() && value.data() == row->values[(turn - 1) % row->values.size()]; }

  std::string label() const {
    return row->name + ", " + std::to_string(row->lines) + " lines\t" + contender->name;
  }
};

/** Those that can do it, each with a file of its own. */
std::vector<Runner> runnersFor(const Row& row, const std::string& folder) {
  std::vector<Runner> runners;
  for (const Contender& contender : contenders()) {
    if (row.lines > contender.maxLines || (row.writes() && contender.write == nullptr)) continue;
    const std::string path = folder + "/" + contender.name;
    std::ofstream(path, std::ios::binary) << row.text;
    runners.push_back({&contender, &row, path});
  }
  return runners;
}

double cpuSeconds() {
  timespec time{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

double secondsPerTurn(Runner& runner) {
  const double start = cpuSeconds();
  for (unsigned i = 0; i < runner.turns; ++i) runner.run();
  return (cpuSeconds() - start) / runner.turns;
}

/** Prints the nanoseconds of one turn in each round, one line for each contender. */
void measureTime(std::vector<Runner>& runners, double budget) {
  constexpr double SLICE = 0.5e-3;
  constexpr unsigned WARM_UP = 4;
  double round = 0;
  for (Runner& runner : runners) {
    double seconds = secondsPerTurn(runner);
    if (seconds < budget / 100) {
      runner.turns = WARM_UP;
      seconds = secondsPerTurn(runner);
      // An even number: both values of a write take part alike.
      runner.turns = 2 * static_cast<unsigned>(std::clamp(SLICE / seconds / 2, 1.0, 1000.0));
    }
    round += seconds * runner.turns;
  }
  const auto rounds = static_cast<unsigned>(std::clamp(budget / round, 3.0, 200.0));
  std::vector<std::string> numbers(runners.size());
  for (unsigned i = 0; i < rounds; ++i) {
    for (std::size_t j = 0; j < runners.size(); ++j) {
      // Each round starts with another one, so that nobody always follows the same neighbour.
      const std::size_t next = (i + j) % runners.size();
      numbers[next] += "\t" + std::to_string(secondsPerTurn(runners[next]) * 1e9);
    }
  }
  for (std::size_t i = 0; i < runners.size(); ++i)
    std::printf("%s%s\n", runners[i].label().c_str(), numbers[i].c_str());
}

/** A system call that strace shows before and after those of the work. */
void mark(const std::string& what) { (void)!access(("mark:" + what).c_str(), F_OK); }

void measureOnce(Runner& runner) {
  // Whatever is done the first time only is done now.
  for (int i = 0; i < 2; ++i) runner.run();
  const std::string label = runner.label();
  mark(label);
  CALLGRIND_ZERO_STATS;
  runner.run();
  CALLGRIND_DUMP_STATS_AT(label.c_str());
  mark("end");
}

bool check(Runner& runner) {
  for (int i = 0; i < 2; ++i) {
    runner.run();
    if (runner.isRight()) continue;
    std::printf("wrong: %s\n", runner.label().c_str());
    return false;
  }
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3) return 2;
  const std::string what = argv[1];
  bool right = true;
  for (const Row& row : allRows()) {
    std::vector<Runner> runners = runnersFor(row, argv[2]);
    if (what == "time") measureTime(runners, std::atof(argv[3]));
    for (Runner& runner : runners) {
      if (what == "once") measureOnce(runner);
      if (what == "check") right = check(runner) && right;
    }
  }
  return right ? 0 : 1;
}
