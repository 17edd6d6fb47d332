// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <functional>
#include <ostream>
#include <string>

// Where every access to memory is checked, all of it is slower: loads are smaller then. The checks'
// own memory counts there, too.
#if defined(__SANITIZE_ADDRESS__)
#define ADDRESS_SANITIZER 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define ADDRESS_SANITIZER 1
#endif
#endif

#ifdef ADDRESS_SANITIZER
inline constexpr int REDUCTION = 5;
inline constexpr long NOISE_IN_KILOBYTES = 8192;  // stacks for the check of returned ones
#else
inline constexpr int REDUCTION = 1;
inline constexpr long NOISE_IN_KILOBYTES = 1024;  // the kernel counts in portions
#endif

/** What an operation cost. All but the memory and the time repeats exactly. */
struct Cost {
  long long bytes = 0;  // that went through read() and write()
  long long calls = 0;  // of these
  double seconds = 0;   // of the processor
  long kilobytes = 0;   // of memory, at most
  int descriptorsLeftOpen = 0;
  long allocations = 0;  // from the heap
  long releases = 0;

  friend std::ostream& operator<<(std::ostream& stream, const Cost& cost) {
    return stream << cost.bytes << " bytes in " << cost.calls << " calls, " << cost.seconds
                  << " s, " << cost.kilobytes << " kB, " << cost.allocations << " allocations";
  }
};

/** Performs an operation in a child process, where its expectations must hold, and counts. */
Cost costOf(const std::function<void()>& operation);

/** Expects ten times the work to take about ten times the bytes and calls. */
void expectLinear(const Cost& one, const Cost& ten);

/**
 * Expects ten times the work to take less than thirty times the processor's time: more than noise
 * and caches make of it, less than the hundredfold that a loop in a loop would take.
 */
void expectLinearTime(const std::function<void()>& one, const std::function<void()>& ten);

/** How many blocks of the heap this process has in use. */
long blocksInUse();

/** How many descriptors this process has open. */
int countDescriptors();

/** The greatest amount of memory that this process has had in use, in kilobytes. */
long peakKilobytes();

/** The pauses that were asked for. They are not slept. */
struct Pauses {
  int count = 0;
  long long nanoseconds = 0;
};
Pauses& pauses();
