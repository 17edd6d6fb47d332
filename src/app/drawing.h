// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#pragma once

/**
 * Has the toolkit draw without a graphics processor: loading a driver takes more time and memory
 * than all else that this window does. Sets variables of the environment, which the toolkit reads
 * when it starts; changes none where one of them is set already.
 *
 * minorVersion: of GTK 4 as it is at run time; the names of its switches depend on it.
 */
void drawWithoutGraphicsProcessor(unsigned minorVersion);
