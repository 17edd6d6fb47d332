// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include "load/cost.h"

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <new>
#include <sstream>
#include <stdexcept>
#include <string>

#include "support/child.h"
#include "support/files.h"

namespace {

// Written to from inside the heap's own functions: nothing here may allocate.
bool counting = false;
long allocations = 0;
long releases = 0;
long inUse = 0;
Pauses pausesAsked;

void noteAllocation() {
  ++inUse;
  if (counting) ++allocations;
}

void noteRelease() {
  --inUse;
  if (counting) ++releases;
}

struct Traffic {
  long long bytes = 0;
  long long calls = 0;
  long long bytesOfTheQuestion = 0;
};

/** What this process has read and written so far, but for the bytes of this very question. */
Traffic trafficSoFar() {
  std::ifstream file("/proc/self/io");
  if (!file) throw std::runtime_error("this kernel does not count reads and writes");
  const std::string text{std::istreambuf_iterator<char>(file), {}};
  Traffic traffic;
  traffic.bytesOfTheQuestion = static_cast<long long>(text.size());
  std::istringstream lines(text);
  std::string name;
  long long number = 0;
  while (lines >> name >> number) {
    if (name == "rchar:" || name == "wchar:") traffic.bytes += number;
    if (name == "syscr:" || name == "syscw:") traffic.calls += number;
  }
  return traffic;
}

double processorSeconds() {
  timespec time{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

/** The memory in use now, in kilobytes. */
long memoryInUse() {
  long size = 0;
  long resident = 0;
  std::ifstream("/proc/self/statm") >> size >> resident;
  return resident * (sysconf(_SC_PAGESIZE) / 1024);
}

Cost performAndCount(const std::function<void()>& operation) {
  Cost cost;
  const int descriptors = countDescriptors();
  const long memory = memoryInUse();
  const Traffic before = trafficSoFar();
  const double started = processorSeconds();
  allocations = releases = 0;
  counting = true;
  operation();
  counting = false;
  cost.allocations = allocations;
  cost.releases = releases;
  cost.seconds = processorSeconds() - started;
  cost.kilobytes = peakKilobytes() - memory;
  const Traffic after = trafficSoFar();
  // The first answer's length is not always the same: it tells of the disk as well, which one run
  // has to read from and the next one does not.
  cost.bytes = after.bytes - before.bytes - before.bytesOfTheQuestion;
  cost.calls = after.calls - before.calls;
  cost.descriptorsLeftOpen = countDescriptors() - descriptors;
  return cost;
}

/** Memory that a child process shares with us. */
template <typename Value>
class Shared {
 public:
  Shared() {
    void* const memory =
        mmap(nullptr, sizeof(Value), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) throw std::runtime_error("no shared memory");
    value = new (memory) Value{};
  }
  Shared(const Shared&) = delete;
  Shared& operator=(const Shared&) = delete;
  ~Shared() { munmap(value, sizeof(Value)); }

  Value* value = nullptr;
};

[[maybe_unused]] const bool IN_MEMORY = (preferMemory(600ULL << 20U), true);

}  // namespace

// ---- The heap

#ifdef ADDRESS_SANITIZER

extern "C" int __sanitizer_install_malloc_and_free_hooks(void (*)(const volatile void*,
                                                                  std::size_t),
                                                         void (*)(const volatile void*));

// It is made not to hold back what was released: here memory is counted.
extern "C" const char* __asan_default_options();
extern "C" const char* __asan_default_options() {
  return "quarantine_size_mb=0:thread_local_quarantine_size_kb=0";
}

namespace {

// The sanitizer's own heap stays in place and tells what it is asked for.
const int INSTALLED = __sanitizer_install_malloc_and_free_hooks(
    [](const volatile void*, std::size_t) { noteAllocation(); },
    [](const volatile void* memory) {
      if (memory != nullptr) noteRelease();
    });

}  // namespace

#else

// The C library's heap under the names that it has for itself.
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);
void __libc_free(void* memory);

void* malloc(std::size_t size) {
  noteAllocation();
  return __libc_malloc(size);
}

void* calloc(std::size_t count, std::size_t size) {
  noteAllocation();
  return __libc_calloc(count, size);
}

void* realloc(void* memory, std::size_t size) {
  if (memory != nullptr) noteRelease();
  if (memory == nullptr || size != 0) noteAllocation();
  return __libc_realloc(memory, size);
}

void free(void* memory) {
  if (memory != nullptr) noteRelease();
  __libc_free(memory);
}
}

#endif

// ---- Pauses, which the linker leads here

extern "C" {
int __wrap_nanosleep(const timespec* wanted, timespec* left);
int __wrap_clock_nanosleep(clockid_t clock, int flags, const timespec* wanted, timespec* left);

int __wrap_nanosleep(const timespec* wanted, timespec* /*left*/) {
  ++pausesAsked.count;
  pausesAsked.nanoseconds += wanted->tv_sec * 1'000'000'000LL + wanted->tv_nsec;
  return 0;
}

int __wrap_clock_nanosleep(clockid_t /*clock*/, int /*flags*/, const timespec* wanted,
                           timespec* left) {
  return __wrap_nanosleep(wanted, left);
}
}

// ---- Counting

Cost costOf(const std::function<void()>& operation) {
  const Shared<Cost> cost;
  EXPECT_EQ(0, inChild([&] {
              alarm(0);  // how long much work may take is the runner's to say
              *cost.value = performAndCount(operation);
            }));
  return *cost.value;
}

void expectLinear(const Cost& one, const Cost& ten) {
  constexpr int BOUND = 13;  // where in a block a file ends makes a difference, too
  EXPECT_LE(ten.bytes, BOUND * one.bytes) << one << "\n" << ten;
  EXPECT_LE(ten.calls, BOUND * one.calls) << one << "\n" << ten;
}

void expectLinearTime(const std::function<void()>& one, const std::function<void()>& ten) {
  constexpr double BOUND = 30;
  constexpr int ATTEMPTS = 3;
  double seconds = 0;
  double bound = 0;
  for (int i = 0; i < ATTEMPTS && seconds >= bound; ++i) {
    bound = BOUND * costOf(one).seconds;
    seconds = costOf(ten).seconds;
  }
  EXPECT_LT(seconds, bound);
}

long blocksInUse() { return inUse; }

int countDescriptors() {
  const std::filesystem::directory_iterator descriptors("/proc/self/fd");
  return static_cast<int>(std::distance(begin(descriptors), end(descriptors))) - 1;  // its own
}

long peakKilobytes() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return usage.ru_maxrss;
}

Pauses& pauses() { return pausesAsked; }
