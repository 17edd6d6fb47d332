# SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
# SPDX-License-Identifier: MIT
"""Lists of what the tests do not see, in which the reason stands below each entry, indented."""


def reasons(file):
    """The entries of a list, with the reason of each."""
    result, entry = {}, None
    for line in file.read_text().splitlines():
        if line.startswith(" "):
            result[entry] += line.strip()
        elif line and not line.startswith("#"):
            entry = line
            result[entry] = ""
    return result


def compare(file, found, paths=None):
    """Compares what was found with a list, as far as it is about some paths; prints what differs.

    Returns whether nothing does.
    """
    listed = {entry for entry in reasons(file) if paths is None or entry.split(":")[0] in paths}
    for title, entries in (("Without a reason", found - listed), ("Listed only", listed - found)):
        if entries:
            print(f"\n{title}, in {file.name}:", *sorted(entries), sep="\n")
    return found == listed
