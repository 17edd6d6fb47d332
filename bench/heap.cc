// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
// Takes the place of the C library's allocation functions in the whole process, and counts.
#include "heap.h"

#include <link.h>
#include <malloc.h>

#include <algorithm>
#include <cstdint>
#include <cstring>

// What the C library calls its own functions.
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* old, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void* memory);
}

namespace {

HeapUse use;
std::ptrdiff_t inUse = 0;

// Where the C library is in memory.
std::uintptr_t libcStart = 0;
std::uintptr_t libcEnd = 0;

int findLibc(dl_phdr_info* object, std::size_t /*size*/, void* /*data*/) {
  if (std::strstr(object->dlpi_name, "/libc.so") == nullptr) return 0;
  libcStart = object->dlpi_addr;
  for (int i = 0; i < object->dlpi_phnum; ++i)
    libcEnd = std::max<std::uintptr_t>(
        libcEnd, libcStart + object->dlpi_phdr[i].p_vaddr + object->dlpi_phdr[i].p_memsz);
  return 1;
}

bool isFromLibc(void* caller) {
  const auto address = reinterpret_cast<std::uintptr_t>(caller);
  return address >= libcStart && address < libcEnd;
}

void* count(void* memory, void* caller) {
  ++use.calls;
  if (!isFromLibc(caller)) ++use.unitCalls;
  inUse += static_cast<std::ptrdiff_t>(malloc_usable_size(memory));
  use.peak = std::max(use.peak, static_cast<std::size_t>(std::max<std::ptrdiff_t>(inUse, 0)));
  return memory;
}

void forget(void* memory) { inUse -= static_cast<std::ptrdiff_t>(malloc_usable_size(memory)); }

}  // namespace

void resetHeapUse() {
  if (libcEnd == 0) dl_iterate_phdr(findLibc, nullptr);
  use = {};
  inUse = 0;
}

HeapUse heapUse() { return use; }

extern "C" {

void* malloc(std::size_t size) { return count(__libc_malloc(size), __builtin_return_address(0)); }

void* calloc(std::size_t number, std::size_t size) {
  return count(__libc_calloc(number, size), __builtin_return_address(0));
}

void* realloc(void* old, std::size_t size) {
  forget(old);
  return count(__libc_realloc(old, size), __builtin_return_address(0));
}

void* memalign(std::size_t alignment, std::size_t size) {
  return count(__libc_memalign(alignment, size), __builtin_return_address(0));
}

void* aligned_alloc(std::size_t alignment, std::size_t size) {
  return count(__libc_memalign(alignment, size), __builtin_return_address(0));
}

int posix_memalign(void** memory, std::size_t alignment, std::size_t size) {
  *memory = count(__libc_memalign(alignment, size), __builtin_return_address(0));
  return *memory != nullptr ? 0 : 12;  // ENOMEM
}

void free(void* memory) {
  forget(memory);
  __libc_free(memory);
}

}  // extern "C"
