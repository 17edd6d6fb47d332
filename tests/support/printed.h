// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <initializer_list>
#include <string>

/** Joins lines, each ended by a line feed. */
std::string lines(std::initializer_list<std::string> texts);

/**
 * All that an action prints, by whatever means, its child processes included if it waits for them:
 * what went to standard output, then each line that went to standard error with "! " before it.
 * What it leaves in a buffer is lost: every line is to be flushed.
 */
std::string printedBy(const std::function<void()>& action);
