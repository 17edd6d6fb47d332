// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#pragma once

#include <string>

/** A whole keyfile as it is to be written: tests/keyfiles/expected/NAME.nmconnection. */
std::string expectedKeyfile(const std::string& name);
