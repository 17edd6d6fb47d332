// SPDX-License-Identifier: MIT
#include "settings/file.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cstdio>

#include "ini/private_file.h"

std::string readFile(const std::string& path) {
  std::string content;
  const int descriptor = open_private(path.c_str(), O_RDONLY);
  if (descriptor < 0) return content;
  std::array<char, 4096> block{};
  ssize_t length = 0;
  while ((length = read(descriptor, block.data(), block.size())) > 0)
    content.append(block.data(), static_cast<std::size_t>(length));
  close(descriptor);
  return content;
}

bool writeFile(const std::string& path, std::string_view content, Access access) {
  constexpr int FLAGS = O_WRONLY | O_CREAT | O_TRUNC;
  constexpr mode_t READABLE = 0666;
  const int descriptor = access == Access::PRIVATE
                             ? open_private(path.c_str(), FLAGS)
                             : open(path.c_str(), FLAGS | O_CLOEXEC | O_NONBLOCK, READABLE);
  std::FILE* file = descriptor < 0 ? nullptr : fdopen(descriptor, "wb");
  if (file == nullptr) {
    if (descriptor >= 0) close(descriptor);
    return false;
  }
  const bool written = std::fwrite(content.data(), 1, content.size(), file) == content.size();
  return std::fclose(file) == 0 && written;
}

void flushToDisk(const std::string& path) {
  for (const std::string& name : {path, path.substr(0, path.rfind('/') + 1)}) {
    const int descriptor = open_private(name.c_str(), O_RDONLY);
    if (descriptor < 0) continue;
    fsync(descriptor);
    close(descriptor);
  }
}
