// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
#pragma once

/** The exit status of the stand-in for the privileged program. */
inline constexpr int HANDLER_STATUS = 42;
