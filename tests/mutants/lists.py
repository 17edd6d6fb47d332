# SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
# SPDX-License-Identifier: MIT
"""Lists of what the tests do not see, in which the reason stands below each entry, indented."""


def compare(file, found, paths=None):
    """Compares what was found with a list, as far as it is about some paths; prints what differs.

    Returns whether nothing does.
    """
    lines = file.read_text().splitlines()
    listed = {line for line in lines if line and not line.startswith((" ", "#"))}
    if paths is not None:
        listed = {entry for entry in listed if entry.split(":")[0] in paths}
    for title, entries in (("Without a reason", found - listed), ("Listed only", listed - found)):
        if entries:
            print(f"\n{title}, in {file.name}:", *sorted(entries), sep="\n")
    return found == listed
