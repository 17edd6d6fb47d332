# SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
# SPDX-License-Identifier: MIT
"""How long anything is waited for, and how many of a great many like cases are tried."""
import os
import time

LIMIT = 20 * float(os.environ.get("MESON_TEST_TIMEOUT_MULTIPLIER", "1"))
# Of the faults and kills of a save or request every so many-th is tried; before a change is taken all.
SAMPLE = int(os.environ.get("FAULTS_SAMPLE", "8"))


def wait_until(condition, what, limit=LIMIT, interval=0.01):
    """Polls until the condition gives something true, and returns that."""
    end = time.monotonic() + limit
    while True:
        value = condition()
        if value:
            return value
        if time.monotonic() > end:
            raise TimeoutError(f"waited {limit:.0f} s in vain: {what}")
        time.sleep(interval)
