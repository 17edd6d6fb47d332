// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <string_view>

// What fails is tried again (base/retry.h) before it counts as failed.

/**
 * The bytes of a file. Nothing, with errno set, when it cannot be opened or not be read to the end.
 * A FIFO is not waited for: it is empty while nobody writes to it.
 */
std::optional<std::string> readFile(const std::string& path);

/**
 * Puts a new private file in the place of an old one, or of a link: at every moment, a power cut
 * included, there is one of them, or the new one under its temporary name (base/temporary_file.h).
 * Returns false where that cannot be done: for want of room, say, or of the right to change the
 * folder, and in the place of anything else, like a folder or a FIFO.
 */
bool replaceFile(const std::string& path, std::string_view content);

/** Whether a file is there whose bytes cannot be read: nobody knows what it holds. */
bool isUnreadable(const std::string& path);

/**
 * Writes new bytes over the old ones of a private file (base/open_private.h), creating it where it
 * is missing. A full disk or a kill leaves the old bytes or the new ones, perhaps with empty lines
 * behind them. Never waits, not even for the reader of a FIFO. Returns false when it cannot be
 * opened or not be written to the end.
 */
bool overwriteFile(const std::string& path, std::string content);

/**
 * Gives a file another name in the same folder, in place of a file or link that has it, unless that
 * is unreadable. At every moment, a power cut included, the file has one of the two names. A link
 * to the file that has the name is removed. A failure is not reported.
 */
void moveFile(const std::string& from, const std::string& to);

/** Removes a file, where there is one. A failure is not reported. */
void removeFile(const std::string& path);

/**
 * Has a file and its folder's list of names written to the disk, so that what was done to them
 * outlives a power cut. A file that is gone counts as done; a failure changes nothing.
 */
void flushToDisk(const std::string& path);
