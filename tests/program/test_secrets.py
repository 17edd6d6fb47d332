# SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
# SPDX-License-Identifier: MIT
"""No password is ever in a file that others may read, nor in an argument or the environment.

Each run is traced, and the trace replayed into a model of the files: who may read each of them, and
whether a password was written to it. The rule has to hold after every single system call, for all
processes of the run, wherever they write.
"""
import os
import re
import stat

from tests.support import program_case
from tests.support.files import UPDATE_RECORD, expected, read

OLD = "Qz7-Vx_9 Kw3 Jm5"
NEW = "Hb2_Tn8-Yc6 Lp41"  # as long as the old one
LONGER = NEW + " Rd0_Gs-9"
# Only the line of the password differs from what a save writes, so that it is patched in place.
CLIENT = expected("client", psk=OLD, permissions='"user:zor:;"')
ACCESS_POINT = expected("access-point", psk=OLD)
# The keyfile before a save, its mode, the mode that is picked, and the new password.
SAVES = (
    (CLIENT, 0o600, None, LONGER),
    (CLIENT, 0o600, None, NEW),
    (CLIENT, 0o600, "Access Point", NEW),
    (ACCESS_POINT, 0o600, None, LONGER),
    (ACCESS_POINT, 0o600, "Client", NEW),
    # Careless hands have left these. Their old password is known, the new one must not be.
    (CLIENT, 0o644, None, LONGER),
    (CLIENT, 0o666, None, NEW),
)
# A wired connection has secrets too, which a save must keep.
WIRED_SECRET = f"[802-1x]\neap=peap;\npassword={OLD}\n".encode()

TRACED = """open openat openat2 creat write writev pwrite64 pwritev pwritev2 truncate ftruncate
chmod fchmod fchmodat fchmodat2 rename renameat renameat2 link linkat unlink unlinkat umask
sendfile sendfile64 copy_file_range splice execve execveat""".split()
WRITES = {"write", "writev", "pwrite64", "pwritev", "pwritev2"}
COPIES = {"sendfile", "sendfile64", "copy_file_range", "splice"}

PIECE = 6  # bytes of a password that are not to be seen either


def contains(text, password):
    """Whether any piece of a password is in a text: it may have been written in parts."""
    return any(password[at:at + PIECE] in text for at in range(len(password) - PIECE + 1))


class File:
    """A file, whatever its names."""

    def __init__(self, mode, secret=False):
        self.mode = mode
        self.secret = secret  # it holds a password that is to be kept from others

    def is_shown(self):
        return self.secret and self.mode & (stat.S_IRWXG | stat.S_IRWXO) != 0


class Files:
    """All files of a machine's /tmp, where everything happens that a run does."""

    def __init__(self, passwords):
        self.passwords = passwords
        self.umask = os.umask(0)
        os.umask(self.umask)
        self.by_path = {}
        self.removed = {}
        self.writes = 0  # of a password
        self.patches = 0  # those of them that change a file in place
        by_inode = {}
        for path, status, content in regular_files():
            file = File(stat.S_IMODE(status.st_mode), self.is_secret(content))
            self.by_path[path] = by_inode.setdefault(status.st_ino, file)

    def is_secret(self, text):
        return any(contains(text, password) for password in self.passwords)

    def replay(self, name, arguments, result):
        """Does what one successful system call did."""
        if name == "umask":
            self.umask = int(arguments, 8)
        elif name.startswith(("open", "creat")):
            self._open(name, arguments, result)
        elif name in WRITES:
            self._write(name, arguments)
        elif name in COPIES:
            files = [self._described(text) for text in descriptors(arguments)]
            secret = any(file.secret for file in files)
            for file in files:
                file.secret |= secret
        elif name.endswith("truncate"):
            file = self._named(arguments)
            file.secret &= not arguments.endswith(", 0")
        elif "chmod" in name:
            mode = re.search(r", (0\d*)(, \w+)?$", arguments)
            self._named(arguments).mode = int(mode[1], 8)
        elif name.startswith("unlink"):
            (path,) = paths(arguments)
            self._remove(path)
        elif name.startswith(("rename", "link")):
            old, new = paths(arguments)
            if old in self.by_path:
                self._remove(new)
                self.by_path[new] = self.by_path[old]
                if name.startswith("rename"):
                    del self.by_path[old]

    def _open(self, name, arguments, path):
        file = self.by_path.get(path)
        if file is None and ("O_CREAT" in arguments or name == "creat"):
            mode = re.search(r"(?:mode=|, )(0\d*)(?:, \w+=.*)?}?(?:, \d+)?$", arguments)
            file = self.by_path[path] = File(int(mode[1], 8) & ~self.umask)
        if file and ("O_TRUNC" in arguments or name == "creat"):
            file.secret = False

    def _write(self, name, arguments):
        target, text = arguments.split(">", 1)
        if self.is_secret(text) and not re.search(r"<(socket|pipe|anon_inode|/dev/pts/)", target):
            self.writes += 1
            self.patches += name.startswith("pwrite")
            self._described(descriptors(arguments)[0]).secret = True

    def _remove(self, path):
        if path in self.by_path:
            self.removed[path] = self.by_path.pop(path)

    def _named(self, arguments):
        names = paths(arguments)
        # A file whose name was not followed here cannot be private for sure.
        return (self.by_path.setdefault(os.path.realpath(names[0]), File(0o777)) if names
                else self._described(descriptors(arguments)[0]))

    def _described(self, path):
        if path.endswith("(deleted)"):
            return self.removed.get(path.removesuffix("(deleted)"), File(0o777))
        return self.by_path.setdefault(path, File(0o777))


def regular_files():
    """Path, status and text of all files in /tmp, without what is mounted there."""
    device = os.stat("/tmp").st_dev
    for folder, folders, names in os.walk("/tmp"):
        folders[:] = [name for name in folders
                      if os.lstat(os.path.join(folder, name)).st_dev == device]
        for name in names:
            path = os.path.join(folder, name)
            status = os.lstat(path)
            if stat.S_ISREG(status.st_mode):
                yield path, status, read(path).decode("latin-1")


def paths(arguments):
    """The absolute paths among the arguments of a call."""
    found = re.findall(r'(?:(?:AT_FDCWD|\d+)<([^>]*)>, )?"((?:[^"\\]|\\.)*)"', arguments)
    return [os.path.normpath(os.path.join(folder or os.getcwd(), path)) for folder, path in found]


def descriptors(arguments):
    """The paths of the open files among the arguments of a call."""
    return [path + deleted
            for path, deleted in re.findall(r"\b\d+<([^>]*)>(\(deleted\))?", arguments)]


def calls(trace):
    """Name, arguments and result of every successful system call, in the order of their ends."""
    begun = {}
    for line in trace.splitlines():
        process, text = line.split(maxsplit=1)
        if text.endswith(" <unfinished ...>"):
            begun[process] = text.removesuffix(" <unfinished ...>")
            continue
        resumed = re.match(r"<\.\.\. \w+ resumed>(.*)", text)
        if resumed:
            text = begun.pop(process) + resumed[1]
        call = re.match(r"(\w+)\((.*)\)\s+= (?:0|[1-9]\d*|0[0-7]+)(?:<([^>]*)>)?$", text)
        if call:
            yield call[1], call[2], call[3]


class Secrets(program_case.ProgramCase):

    def setUp(self):
        super().setUp()
        self.keyfile = self.path("wlan0.nmconnection")
        self.log = os.path.join("/tmp", "trace")

    def put_wifi(self, content, mode=0o600):
        self.put("wlan0.nmconnection", content)
        os.chmod(self.keyfile, mode)

    def watch(self, act, passwords=(NEW, OLD)):
        """Runs the program and checks every moment of it. Returns the run and its files."""
        before = Files(passwords)
        traced = ",".join("?" + name for name in TRACED)
        program = self.run_debug(wrapper=[
            "strace", "-f", "--seccomp-bpf", "-y", "-v", "-s", "100000", "-o", self.log,
            "-e", "signal=none", "-e", "trace=" + traced,
            "sh", "-c", 'umask 0; exec "$@"', "sh"])
        act(program)
        self.assertEqual(program.finish(), 0, program.errors)
        self.check_trace(before)
        return program, before

    def check_trace(self, files):
        trace = read(self.log).decode("latin-1")
        os.remove(self.log)  # in which the passwords stand
        executed = []
        for name, arguments, result in calls(trace):
            if name.startswith("exec"):
                executed.append(arguments)
                self.assertFalse(files.is_secret(arguments), arguments)
                continue
            files.replay(name, arguments, result)
            for file in [*files.by_path.values(), *files.removed.values()]:
                self.assertFalse(file.is_shown(), f"{name}({arguments}) in mode {file.mode:o}")
        self.assertEqual(len([text for text in executed if f'"{self.recorder.path}"' in text]), 1)
        self.check_end(files)

    def check_end(self, files):
        """The model must have come to what is really there, or it has missed something."""
        for path, status, content in regular_files():
            file = files.by_path.get(path)
            if files.is_secret(content):
                self.assertTrue(file and file.secret, path)
            if path.startswith(self.connections):
                self.assertEqual(stat.S_IMODE(status.st_mode), file.mode, path)

    @staticmethod
    def save_wifi(password, pick=None, then=()):
        """What is done to save a password; then: more buttons to press."""
        def act(program):
            program.show_page("Wifi")
            if pick:
                program.pick(pick)
            if pick != "Disabled":
                program.fill("Password", password)
            if pick == "Access Point" and not then:
                program.fill("IP Address", "10.42.0.1")
                program.fill("Subnet Mask", "255.255.255.0")
            for label in ("Save And Exit", *then):
                program.button(label)
        return act

    def assert_saved(self, password, program, files):
        """The password is in the keyfile, was seen on its way there, and printed once at most."""
        self.assertIn(f"\npsk={password}\n", read(self.keyfile).decode())
        self.assertGreater(files.writes, 0)
        self.assertEqual(stat.S_IMODE(os.stat(self.keyfile).st_mode), 0o600)
        self.assertFalse(files.is_secret(program.errors))
        is_access_point = b"\nmode=ap\n" in read(self.keyfile)
        self.assertEqual([line for line in program.output.splitlines() if files.is_secret(line)],
                         is_access_point * [f"Wifi Password being validated: {password}"])
        self.assertFalse(os.path.exists(UPDATE_RECORD))

    def test_new_password_is_never_shown(self):
        for before, mode, pick, password in SAVES:
            with self.subTest(pick=pick, mode=oct(mode), password=password):
                self.put_wifi(before, mode)
                run = self.watch(self.save_wifi(password, pick),
                                 (NEW, OLD) if mode == 0o600 else [password])
                self.assert_saved(password, *run)
                self.assertEqual(run[1].patches > 0, password == NEW and not pick)

    def test_refused_or_removed_password_is_never_written(self):
        for pick, then in (("Access Point", ("OK", "Exit Without Saving")), ("Disabled", ())):
            with self.subTest(pick):
                self.put_wifi(CLIENT)
                program, files = self.watch(self.save_wifi(NEW, pick, then))
                self.assertEqual(files.writes, 0)
                self.assertEqual(os.path.exists(self.keyfile), pick != "Disabled")
                self.assertFalse(files.is_secret(program.errors))
                self.assertEqual(files.is_secret(program.output), pick != "Disabled")

    def test_second_name_of_a_keyfile_shows_nothing(self):
        self.put_wifi(CLIENT, 0o644)
        other = os.path.join(self.folder, "other")
        os.link(self.keyfile, other)
        self.assert_saved(NEW, *self.watch(self.save_wifi(NEW), [NEW]))
        self.assertEqual(stat.S_IMODE(os.stat(other).st_mode), 0o600)

    def test_target_of_a_link_shows_nothing(self):
        self.put_wifi(CLIENT, 0o644)
        target = os.path.join(self.folder, "target")
        os.rename(self.keyfile, target)
        os.symlink(target, self.keyfile)
        self.assert_saved(NEW, *self.watch(self.save_wifi(NEW), [NEW]))

    def test_leftover_of_a_temporary_file_is_not_used(self):
        self.put_wifi(CLIENT)
        left = self.put("wlan0.nmconnectio~", "left over")
        os.chmod(left, 0o666)
        other = os.path.join(self.folder, "other")
        os.link(left, other)
        self.assert_saved(LONGER, *self.watch(self.save_wifi(LONGER)))
        self.assertEqual(read(other), b"left over")
        self.assertFalse(os.path.exists(left), "not the name of the temporary file")

    def test_wired_secret_is_kept_and_never_shown(self):
        for stored, label in (("ethernet-static", None), ("ethernet-dynamic", None),
                              ("ethernet-dynamic", "Static IP"), ("ethernet-static", "Dynamic IP")):
            with self.subTest(stored=stored, label=label):
                # What is missing is added, so that the file is written again.
                self.put("ethernet.nmconnection",
                         expected(stored).replace(b"autoconnect=true\n", b"") + WIRED_SECRET)

                def act(program):
                    if label:
                        program.pick(label)
                    if label == "Static IP":
                        program.fill("IP Address", "192.168.1.10")
                        program.fill("Subnet Mask", "255.255.255.0")
                        program.fill("Default Gateway", "192.168.1.1")
                    program.button("Save And Exit")

                program, files = self.watch(act)
                self.assertFalse(files.is_secret(program.output + program.errors))
                # A change of the mode begins with a default file.
                kept = f"\npassword={OLD}\n" in read(self.path("ethernet.nmconnection")).decode()
                self.assertEqual((kept, files.writes > 0), (not label, not label))
                self.assertRegex(read(UPDATE_RECORD).decode(), "^([0-9A-F]{2} ){13}$")
                self.assertEqual(stat.S_IMODE(os.stat(UPDATE_RECORD).st_mode), 0o666)


program_case.main()
