// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
// Gives a fuzzing program the inputs of a folder, one test each: what was found once stays mended.
#include <algorithm>
#include <filesystem>

#include "fuzz/support.h"

int main(int argc, char* argv[]) {
  if (argc != 2) return 2;
  std::vector<std::filesystem::path> inputs;
  for (const auto& entry : std::filesystem::directory_iterator(argv[1]))
    inputs.push_back(entry.path());
  std::sort(inputs.begin(), inputs.end());
  std::printf("1..%zu\n", inputs.size());
  std::size_t number = 0;
  for (const auto& input : inputs) {
    const std::string name = input.filename().string();
    std::fprintf(stderr, "%s\n", name.c_str());  // a broken rule ends the program here
    const std::string content = readBytes(input.string());
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(content.data()), content.size());
    std::printf("ok %zu - %s\n", ++number, name.c_str());
    std::fflush(stdout);
  }
  return inputs.empty() ? 1 : 0;
}
