// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
// Stands in for the privileged program where it is started thousands of times: ends at once, with a
// status that nothing else here has. The only thing that it looks at is that it got an action.
#include "load/handler_stub.h"

int main(int argc, char** /*argv*/) { return argc > 1 ? HANDLER_STATUS : 1; }
