# SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
# SPDX-License-Identifier: MIT
include $(sort $(wildcard $(BR2_EXTERNAL_ZOR_NETWORK_PATH)/package/*/*.mk))
