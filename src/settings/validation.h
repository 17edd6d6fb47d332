// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

/** A field of a form and the verdict on it. */
struct CheckedField {
  std::string_view label;
  bool valid;
};

/**
 * Names the invalid ones of the fields to the user, as in "Invalid IP Address, Gateway". If none
 * is, the text says so in the same words, "Invalid All fields are valid".
 */
std::string describeInvalidFields(std::initializer_list<CheckedField> fields);
