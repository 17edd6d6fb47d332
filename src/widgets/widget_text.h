// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#pragma once

#include <glibmm/ustring.h>

#include <string>

/** The text for a widget: bytes that are not valid UTF-8 become replacement characters. */
inline Glib::ustring toWidgetText(const std::string& bytes) {
  return Glib::ustring(bytes).make_valid();
}
