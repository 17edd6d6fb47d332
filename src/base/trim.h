// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#pragma once

#include <string_view>

/** The text without the spaces, tabs, newlines and carriage returns at both ends. */
std::string_view trim(std::string_view text);
