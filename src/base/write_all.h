// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#pragma once

#include <string_view>

/** Writes bytes to a descriptor, however many calls that takes. Returns false when one fails. */
bool writeAll(int descriptor, std::string_view bytes);
