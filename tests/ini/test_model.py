# SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
# SPDX-License-Identifier: MIT
"""The INI unit against the model of its rules, on thousands of generated files and operations.

MODEL_SEEDS=5,6,7 tries other seeds, MODEL_CASES=10000 more files for each. A case that differs is
made as small as it gets before it is shown.
"""
import collections
import itertools
import os
import random
import re
import subprocess
import sys
import tempfile
import unittest

from tests.ini import model
from tests.support import tap

PERFORM = next((argument for argument in sys.argv[1:] if argument.startswith("/")), None)
SEEDS = [int(seed) for seed in os.environ.get("MODEL_SEEDS", "1,2,3,4").split(",")]
CASES = int(os.environ.get("MODEL_CASES", "1500"))  # for each seed
MEMORY = "/dev/shm" if os.access("/dev/shm", os.W_OK) else None


def set_long(program):
    """Gives the model the numbers of a program: a long has the size of an address."""
    with open(program, "rb") as file:
        bits = {1: 32, 2: 64}[file.read(5)[4]]  # what an ELF file says of itself
    model.LONG_MIN, model.LONG_MAX = -2 ** (bits - 1), 2 ** (bits - 1) - 1


Case = collections.namedtuple("Case", "data operations")
Difference = collections.namedtuple("Difference", "operation expected actual")


# ---- What the model says

def encode(argument):
    """An argument or a result as a word."""
    if argument is None:
        return "-"
    if isinstance(argument, bytes):
        return "=" + argument.hex()
    return argument.hex() if isinstance(argument, float) else str(argument)


def written_text(name, number):
    """The text that the writing operations for numbers write."""
    if name == "putbool":
        return b"true" if number else b"false"
    return (b"%d" if name == "putl" else b"%f") % number


def expected_read(data, name, arguments):
    """The answer to a reading operation."""
    if name == "browse":
        strings = itertools.chain(*model.browse(data, *arguments))
        return " ".join([str(int(data is not None)), *map(encode, strings)])
    result = getattr(model, name)(data, *arguments)
    if name in ("gets", "getsection", "getkey"):
        return f"{len(result or b'')} {encode(result)}"
    if name == "getf":
        # As C's "%a" writes it.
        return "nan" if result != result else c_hexadecimal(result)
    return str(result)


def c_hexadecimal(number):
    """A number like C's "%a", which leaves final zeros out."""
    text = float(number).hex()
    if "p" not in text:
        return text
    digits, exponent = text.split("p")
    if "." in digits:
        digits = digits.rstrip("0").removesuffix(".")
    return digits + "p" + exponent


def expectations(case):
    """Operation, answer and way of writing (None for a reading one) of each operation."""
    data = case.data
    for name, *arguments in case.operations:
        if not name.startswith("put"):
            yield (name, *arguments), expected_read(data, name, arguments), None
            continue
        section, key, value = arguments
        text = value if name == "puts" else written_text(name, value)
        data, way = model.puts(data, section, key, text)
        names = "/" if data is None else "/test.ini/"
        yield (name, *arguments), f"1 {encode(data)} {names}", way


# ---- What the unit does

def request_lines(case):
    """A case as requests."""
    yield "file " + encode(case.data)
    for name, *arguments in case.operations:
        yield " ".join([name, *map(encode, arguments)])


def answers(cases):
    """The answers to all requests, fewer if the unit ended the process; and what it said then."""
    requests = "".join(line + "\n" for case in cases for line in request_lines(case))
    with tempfile.TemporaryDirectory(prefix="zor-test-", dir=MEMORY) as folder:
        done = subprocess.run([PERFORM, folder], input=requests, capture_output=True, text=True,
                              timeout=120, check=False)
    ending = "" if done.returncode == 0 else f"ended with {done.returncode}: {done.stderr[-2000:]}"
    return done.stdout.splitlines(), ending


def differences(cases):
    """For each case its first difference or None; all cases differ once one has ended the unit."""
    lines, ending = answers(cases)
    replies = iter(lines)
    for case in cases:
        yield first_difference(case, replies, ending)


def first_difference(case, replies, ending):
    """Compares one case; takes all its replies."""
    actual = list(itertools.islice(replies, len(case.operations) + 1))[1:]
    for index, (operation, answer, way) in enumerate(expectations(case)):
        if index >= len(actual):
            return Difference(operation, answer, ending or "no answer")
        if way is model.Way.OPEN:
            actual[index] = actual[index].rpartition(" ")[0]
        elif way is not None:
            answer += " " + way.name.lower()
        if actual[index] != answer:
            return Difference(operation, answer, actual[index])
    return None


def difference(case):
    """The first difference of one case, or None."""
    return next(differences([case]))


# ---- Making a failing case smaller

def shorter(sequence):
    """The sequence without some of its elements, the largest pieces first."""
    size = len(sequence)
    while size > 0:
        for start in range(0, len(sequence), size):
            yield sequence[:start] + sequence[start + size:]
        size //= 2


def smaller(case):
    """Cases that are a little smaller."""
    for operations in shorter(case.operations):
        if operations:
            yield case._replace(operations=operations)
    if case.data is not None:
        for data in shorter(case.data):
            yield case._replace(data=data)
    for index, operation in enumerate(case.operations):
        for position, argument in enumerate(operation):
            if isinstance(argument, bytes):
                for text in shorter(argument):
                    changed = (*operation[:position], text, *operation[position + 1:])
                    yield case._replace(operations=[*case.operations[:index], changed,
                                                    *case.operations[index + 1:]])


def reduced(case, limit=2000):
    """The smallest case that still differs, as far as a number of attempts finds it."""
    attempts = itertools.count()
    while True:
        for candidate in smaller(case):
            if next(attempts) >= limit:
                return case
            if difference(candidate):
                case = candidate
                break
        else:
            return case


def shown(argument):
    """An argument as text, with long repetitions counted."""
    if not isinstance(argument, bytes):
        return repr(argument)
    parts = []
    pattern = rb"((?:(?!(.{1,2}?)\2{19}).)+)|((.{1,2}?)\4{19,})"
    for other, _, run, unit in re.findall(pattern, argument, re.DOTALL):
        parts.append(repr(other) if other else f"{unit!r} * {len(run) // len(unit)}")
    return " + ".join(parts) or repr(b"")


def report(case):
    """A reduced case as text."""
    case = reduced(case)
    found = difference(case)
    lines = ["file: " + shown(case.data)]
    lines += [f"operation: {name} " + ", ".join(map(shown, arguments))
              for name, *arguments in case.operations]
    return "\n".join([*lines, f"differs in: {found.operation[0]}", f"  expected: {found.expected}",
                      f"  actual:   {found.actual}"])


# ---- Generated cases

BYTES = [b"[", b"]", b";", b"#", b"=", b'"', b"\\", b":", b" ", b"\t", b"\r", b"\n", b"\n", b"\n",
         b"\0", b"a", b"A", b"b"]
TOKENS = [b"[a]\n", b"[A]\n", b"[b]\n", b"a=", b"b=", b"A:", b"ab=", b" [ a ] ;x\n", b'""', b'\\"',
          b"\n[", b"=b\n", b"\xc3\xa9", b'a="', b"[]\n", b"\r\n", b"0x1F", b"yes", b"-7", b"1.5e3"]
KEYFILE_LINES = [b"[connection]\n", b"[ipv4]\n", b"[wifi-security]\n", b"id=ethernet\n",
                 b"type=wifi\n", b"method = auto\n", b"address1=192.168.1.10/24,192.168.1.1\n",
                 b'psk="a;b"\n', b"psk=a\\\"b\n", b"group=ccmp;\n", b"dns=8.8.8.8;8.8.4.4;\n",
                 b"# note\n", b"; note\n", b"\n", b"ID: x ; y\n", b"[IPV4] # again\n",
                 b"channel=6\r\n", b"[proxy]", b"autoconnect=true\n"]
KEYFILE_SECTIONS = [b"connection", b"ipv4", b"IPv4", b"wifi-security", b"proxy", b"none"]
KEYFILE_KEYS = [b"id", b"type", b"method", b"address1", b"psk", b"group", b"dns", b"channel"]
STRING_BYTES = [b"a", b"A", b"b", b" ", b'"', b";", b"#", b"\\", b"=", b"[", b"]", b":", b"\t",
                b"\r", b"\xc3"]
# Around the size of the buffer and its multiples.
LENGTHS = [size + less for size in (505, 508, 510, 511, 512, 513, 514, 1020, 1022, 1023, 1024, 1533)
           for less in (-3, -2, -1, 0, 1, 2)]
SIZES = [-1, 0, 1, 2, 3, 4, 5, 32, 64, 100, 509, 510, 511, 512, 513, 600]


class Generator:
    """Cases of all kinds, always the same ones for a seed."""

    def __init__(self, seed):
        self.random = random.Random(seed)
        self.keyfile = False
        self.ways = collections.Counter()

    def maybe(self, probability):
        """True with a probability."""
        return self.random.random() < probability

    def join(self, choices, count):
        """Some of the choices behind one another."""
        return b"".join(self.random.choices(choices, k=count))

    def case(self):
        """A file and operations that suit it."""
        self.keyfile = self.maybe(0.3)
        first = None if self.maybe(0.03) else self.file()
        data, operations = first, []
        for _ in range(self.random.randrange(2, 9)):
            operations += [self.reading(data) for _ in range(self.random.randrange(0, 4))]
            operations.append(self.writing(data))
            name, section, key, value = operations[-1]
            text = value if name == "puts" else written_text(name, value)
            data, way = model.puts(data, section, key, text)
            self.ways[way] += 1
        return Case(first, operations)

    def file(self):
        """The bytes of a file."""
        if self.keyfile:
            data = self.join(KEYFILE_LINES, self.random.randrange(0, 25))
            if data and self.maybe(0.5):  # one byte is damaged
                at = self.random.randrange(len(data))
                data = data[:at] + self.random.choice(BYTES) + data[at + 1:]
        else:
            data = b"".join(self.random.choice(TOKENS if self.maybe(0.45) else BYTES)
                            for _ in range(self.random.randrange(0, 25)))
        if self.maybe(0.35):
            for _ in range(self.random.randrange(1, 4)):
                at = self.random.randrange(len(data) + 1)
                data = data[:at] + self.long_line() + data[at:]
        return data

    def long_line(self):
        """A line whose length is near that of the buffer."""
        pick = self.random.choice
        start = pick([b"a=", b"b:", b"[a", b"[", b";", b"", b'a="', b"\n[a]\n", b"ab = "])
        length = pick(LENGTHS)
        filling = pick([b"x", b"a", b" ", b'"', b"=", b'\\"', b"[", b"]"]) * length
        line = start + filling[:max(0, length - len(start) - pick([0, 1, 2]))]
        return (line + pick([b"", b"]", b"=b", b"[a]", b'"', b"a=b", b";", b"\0"])
                + pick([b"\n", b"\r\n", b"", b"\n[a]\n", b"\n[b]\n"]))

    def string(self, limit=6):
        """Any short string, sometimes a very long one."""
        if self.maybe(0.06):
            return (self.random.choice([b"x", b'"', b"a ", b'\\"'])
                    * self.random.randrange(120, 520))
        return self.join(STRING_BYTES, self.random.randrange(limit))

    def section(self, data):
        """A section, one of the file's or another one."""
        kind = self.random.random()
        if kind < 0.25:
            return None if kind < 0.15 else b""
        names = list(model.section_names(data)) if kind < 0.5 else []
        if names:
            return self.random.choice(names)
        if kind < 0.9:
            return self.random.choice(KEYFILE_SECTIONS if self.keyfile
                                      else [b"a", b"A", b"b", b"B", b"ab"])
        return self.string(4)

    def key(self, data, section):
        """A key, one of the section's or another one."""
        kind = self.random.random()
        keys = [key for _, _, key, _ in model.key_lines(data, section)] if kind < 0.5 else []
        if keys:
            return self.random.choice(keys)
        if kind < 0.9:
            return self.random.choice(KEYFILE_KEYS if self.keyfile
                                      else [b"a", b"A", b"b", b"ab", b""])
        return self.string(4)

    def value(self, data, section, key):
        """A value to write, often one that is as long as the one in the file."""
        found = model.find_key(data, section, key)
        if found is None or self.maybe(0.4):
            value = self.string()
            return value + b"\nq" if self.maybe(0.03) else value
        old = model.clean(found[2], model.BUFFER_SIZE)
        kind = self.random.random()
        if kind < 0.3:
            return old
        if kind < 0.6:
            return old[::-1]
        if kind < 0.85:
            return b"z" * len(old)
        return b"z" * max(0, len(found[1]) - len(key) - 2)

    def reading(self, data):
        """A reading operation."""
        pick = self.random.choice
        section = self.section(data)
        key = None if self.maybe(0.05) else self.key(data, section)
        size, index = pick(SIZES), self.random.randrange(-1, 5)
        name = pick(["gets", "gets", "gets", "getl", "getf", "getbool", "getsection", "getkey",
                     "hassection", "haskey", "browse"])
        default = pick([None, b"", b"def", b"x" * 99, self.string()])
        return (name, *{
            "gets": (section, key, default, size),
            "getl": (section, key, pick([0, -1, model.LONG_MAX])),
            "getf": (section, key, pick([0.0, -1.5])),
            "getbool": (section, key, pick([0, 1, 7])),
            "getsection": (index, size),
            "getkey": (section, index, size),
            "hassection": (section,),
            "haskey": (section, key if key is not None else b"a"),
            "browse": (pick([1, 2, 1000]),),
        }[name])

    def writing(self, data):
        """A writing operation."""
        section = self.section(data)
        if self.maybe(0.1):
            return ("puts", section, None, None if self.maybe(0.5) else b"x")
        key = self.key(data, section)
        kind = self.random.random()
        if kind < 0.2:
            return ("puts", section, key, None)
        if kind < 0.3:
            name = self.random.choice(["putl", "putf", "putbool"])
            numbers = {"putl": [0, -5, model.LONG_MAX, model.LONG_MIN], "putf": [0.0, -0.5, 123456.75],
                       "putbool": [0, 1, 2]}
            return (name, section, key, self.random.choice(numbers[name]))
        return ("puts", section, key, self.value(data, section, key))


class Model(unittest.TestCase):
    """All answers are those of the model."""

    def compare(self, cases):
        """Fails with the first case that differs, reduced."""
        for batch in (cases[start:start + 200] for start in range(0, len(cases), 200)):
            for case, found in zip(batch, differences(batch)):
                if found:
                    self.fail(report(case))

    def test_generated_files_and_operations_agree(self):
        """Sequences of operations on files near the keyfile format and far from it."""
        ways = collections.Counter()
        for seed in SEEDS:
            with self.subTest(seed=seed):
                generator = Generator(seed)
                cases = [generator.case() for _ in range(CASES)]
                operations = sum(len(case.operations) for case in cases)
                print(f"# seed {seed}: {CASES} files, {operations} operations", flush=True)
                self.compare(cases)
                ways += generator.ways
        for way in model.Way:
            self.assertGreater(ways[way], 0, f"never generated: {way.value}")

    def test_every_short_value_agrees(self):
        """All values of up to four of the bytes that matter, read and written."""
        cases = []
        for length in range(5):
            for value in map(b"".join, itertools.product(
                    [b'"', b"\\", b";", b" ", b"a", b"\t"], repeat=length)):
                cases.append(Case(b"a=" + value,
                                  [("gets", None, b"a", b"!", size) for size in (512, 1, 2, 3, 4)]))
                cases.append(Case(None, [("puts", b"s", b"a", value)]))
        self.compare(cases)

    def test_every_line_length_around_the_buffer_agrees(self):
        """Keys, comments and headers that end before, at and after the end of a buffer."""
        cases = []
        for length in (*range(500, 520), *range(1015, 1030)):
            for start, end in ((b"a=", b""), (b"a=", b" ;x"), (b"; a", b"=1"), (b"[a", b"]"),
                               (b'a="', b'"'), (b"", b"a=1"), (b"", b"[a]")):
                filling = b"x" * (length - len(start) - len(end))
                for ending in (b"\n", b"\nb=2\n", b"\r\nb=2"):
                    data = b"[s]\n" + start + filling + end + ending
                    cases.append(Case(data, [
                        ("gets", b"s", b"a", b"!", 600), ("browse", 100), ("getsection", 1, 600),
                        ("puts", b"s", b"b", b"new"), ("puts", b"s", b"a", b"new"),
                        ("puts", b"s", b"a", None), ("puts", b"s", None, None)]))
        self.compare(cases)

    def test_every_length_of_a_key_around_the_buffer_agrees(self):
        """What room a long key leaves for a value, with quotes and without."""
        cases = [Case(b"", [("puts", None, b"k" * length, value)])
                 for length in range(495, 520)
                 for value in (b"", b"v", b"value", b"v;", b";" * 20, b'"' * 20, b"v ")]
        self.compare(cases)

    def test_every_length_of_a_number_around_the_buffer_agrees(self):
        """Numbers are read from the first 63 bytes of a value."""
        cases = []
        for length in range(55, 70):
            for start in (b"", b"-", b"0x", b"."):
                data = b"k=" + start + (b"0" * 50 + b"123456789" * 3)[:length - len(start)]
                cases.append(Case(data, [("getl", None, b"k", 0), ("getf", None, b"k", 0.0)]))
        self.compare(cases)


class Reduction(unittest.TestCase):
    """The tests above see a difference, and say little more than what matters."""

    def test_difference_is_found_and_reduced(self):
        """A model that forgets to compare names without regard to case."""
        same_name = model.same_name
        self.addCleanup(setattr, model, "same_name", same_name)
        model.same_name = lambda one, other: one == other
        generator = Generator(1)
        cases = [generator.case() for _ in range(200)]
        failing = next(case for case, found in zip(cases, differences(cases)) if found)
        small = reduced(failing)
        self.assertTrue(difference(small))
        self.assertEqual(len(small.operations), 1)
        self.assertLess(len(small.data), 12)


if __name__ == "__main__":
    if not PERFORM:
        sys.exit(__doc__)
    set_long(PERFORM)
    tap.main()
