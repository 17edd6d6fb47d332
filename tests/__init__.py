# SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
# SPDX-License-Identifier: MIT
"""Tests of whole programs. Each module is run by its name: python3 -m tests.program.test_wifi."""
