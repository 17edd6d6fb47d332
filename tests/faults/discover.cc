// SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
// SPDX-License-Identifier: MIT
// Prints what the program's next start would: which keyfiles it finds.
#include "app/NetworkManagerConfig.h"

int main() { NetworkManagerConfig::getInstance().initialize(NetworkManagerConfig::DEBUG); }
