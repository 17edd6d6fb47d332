// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#pragma once

#include <gtest/gtest.h>

#include <string_view>

/** Compares all bytes. On a difference it shows where that begins, as text and as numbers. */
#define EXPECT_BYTES_EQ(expected, actual) EXPECT_PRED_FORMAT2(compareBytes, expected, actual)

testing::AssertionResult compareBytes(const char* expectedText, const char* actualText,
                                      std::string_view expected, std::string_view actual);
