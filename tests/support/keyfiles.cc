// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#include "support/keyfiles.h"

#include <stdexcept>

#include "support/files.h"

std::string expectedKeyfile(const std::string& name) {
  const std::string path = std::string(EXPECTED_KEYFILES) + "/" + name + ".nmconnection";
  if (!exists(path)) throw std::runtime_error("there is no " + path);
  return readBytes(path);
}
