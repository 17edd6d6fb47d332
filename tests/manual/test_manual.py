# SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
# SPDX-License-Identifier: MIT
"""What the manual pages say, as far as no other test shows it, and what of it can go stale."""
import glob
import os
import re
import shutil
import signal
import subprocess
import unittest

from tests.program import transcripts as said
from tests.support import program_case
from tests.support.desktop import bound_to_us, wait_until
from tests.support.files import SOURCES, expected, read, source
from tests.support.isolation import SYSTEM_CONNECTIONS
from tests.support.program_case import UPDATE_RECORD

UNLOCK, ROLLBACK = ["unlock"], ["rollback"]
WINDOW_IS_BUILT = "no manual settings to populate.\n"
# The 200 milliseconds, made longer: a busy machine may take that long to start a shell script. What
# is traced cannot be searched for leaks.
LONGER_PAUSE = {"wrapper": ["strace", "-qq", "-o", "/dev/null", "-e", "trace=clock_nanosleep",
                            "-e", "inject=clock_nanosleep:delay_enter=2000000"],
                "environment": {"ASAN_OPTIONS": "detect_leaks=0"}}

PROGRAM_PAGE = source("data", "man", "zor-network-manager.1")
HANDLER_PAGE = source("data", "man", "zor-network-permissions-handler.8")


class ManualCase(program_case.ProgramCase):

    def replace_handler(self, script):
        """Puts a shell script in the recorder's place."""
        self.recorder.replace(script.format(folder=self.folder))

    def mark(self, name):
        """The path of a file by which the scripts and the test tell each other something."""
        return os.path.join(self.folder, name)

    def run_production(self, *arguments, **options):
        """Starts the program on the samples, in the system's folder."""
        self.use_samples(SYSTEM_CONNECTIONS)
        return self.run_program(*arguments, **options)

    def assert_requests(self, *calls):
        # Streams are shared with the requests: they have ended when the program's are closed.
        self.assertCountEqual(self.recorder.calls(), list(calls))


class Requests(ManualCase):
    """ACTIONS: what is asked when, and what is not."""

    def test_script_without_an_interpreter_is_run_by_the_shell(self):
        self.replace_handler("echo $1 >> {folder}/requests\n")
        program = self.run_production()
        program.close()
        self.assertEqual(program.finish(), 0)
        self.assertEqual(read(self.mark("requests")), b"unlock\nrollback\n")

    def test_unlock_in_time_and_too_late(self):
        keyfile = os.path.join(SYSTEM_CONNECTIONS, "ethernet.nmconnection")
        script = ("#!/bin/sh\n[ $1 = unlock ] || exit 0\n"
                  "while [ ! -e {folder}/go ]; do sleep 0.01; done\n"
                  f"mv {{folder}}/kept {keyfile}\n")
        for in_time in (True, False):
            with self.subTest(in_time=in_time):
                self.use_samples(SYSTEM_CONNECTIONS)
                shutil.move(keyfile, self.mark("kept"))
                with open(self.mark("kept"), "ab") as file:
                    file.write(b"\n# ours\n")
                self.replace_handler(script)
                if in_time:
                    open(self.mark("go"), "wb").close()
                program = self.run_program(**(LONGER_PAUSE if in_time else {}))
                program.look()
                open(self.mark("go"), "wb").close()
                wait_until(lambda: os.path.exists(keyfile), "the keyfile")
                found = f"Ethernet Connection Path: {keyfile if in_time else ''}\n"
                self.assertIn(found, program.output)
                program.show_page("Wifi")
                program.show_page("Ethernet")
                program.button("Save And Exit")
                self.assertEqual(program.finish(), 0)
                # A save without a keyfile makes a new one, over one that has come there since.
                made = "New Ethernet connection file created at: "
                self.assertEqual(made not in program.output, in_time)
                self.assertEqual(b"\n# ours\n" in read(keyfile), in_time)
                os.remove(self.mark("go"))

    def test_none_after_a_kill_or_a_fault(self):
        for number in (signal.SIGKILL, signal.SIGQUIT, signal.SIGABRT, signal.SIGSEGV):
            with self.subTest(signal=number):
                self.recorder.forget()
                # A sanitizer would turn the fault into an exit of its own.
                program = self.run_production(
                    wrapper=["sh", "-c", 'ulimit -c 0; exec "$@"', "sh"],
                    environment={"ASAN_OPTIONS": "detect_leaks=0:handle_segv=0"})
                program.look()
                os.kill(program.process.pid, number)
                self.assertEqual(program.finish(), -number)
                self.assert_requests(UNLOCK)
                program.__exit__()

    def test_none_after_a_signal_in_the_pause(self):
        for name in ("HUP", "INT", "TERM"):
            with self.subTest(signal=name):
                self.replace_handler("#!/bin/sh\n"
                                     f"echo $1 >> {{folder}}/{name}\nkill -{name} $PPID\n")
                program = self.run_production(**LONGER_PAUSE)
                self.assertEqual(program.finish(), -signal.Signals["SIG" + name])
                self.assertEqual(program.output, said.PRODUCTION)
                self.assertEqual(read(self.mark(name)), b"unlock\n")

    def test_none_when_the_x_server_goes(self):
        # The toolkit ends the process itself. A Wayland compositor that goes has the same effect.
        reader, writer = os.pipe()
        server = subprocess.Popen(bound_to_us("Xvfb", "-displayfd", str(writer)),
                                  pass_fds=[writer], stderr=subprocess.DEVNULL)
        self.addCleanup(server.wait)
        self.addCleanup(server.kill)
        os.close(writer)
        with open(reader, "rb") as announcement:
            display = announcement.readline().decode().strip()
        program = self.run_production(environment={"DISPLAY": ":" + display, "G_DEBUG": ""})
        program.wait_for_output(WINDOW_IS_BUILT)
        server.kill()
        self.assertEqual(program.finish(), 1)
        self.assert_requests(UNLOCK)


class Files(ManualCase):
    """THE KEYFILES, THE UPDATE RECORD, FILES."""

    def test_record_is_as_in_the_example(self):
        (example,) = re.findall(r"^[0-9A-F]{2}(?: [0-9A-F]{2}){12}$", HANDLER_PAGE, re.M)
        self.put("ethernet.nmconnection", expected("ethernet-static"))
        target = self.mark("target")
        os.symlink(target, UPDATE_RECORD)  # which is followed
        program = self.run_debug()
        program.fill("IP Address", "192.168.001.010")
        program.button("Save And Exit")
        self.assertEqual(program.finish(), 0)
        self.assertTrue(os.path.islink(UPDATE_RECORD))
        record = read(target).decode()
        self.assertEqual(record, example + " ")
        self.assertEqual(len(record), 39)
        offsets = re.findall(r"^\.It ([\d, ]+) Ta [\d to]+ Ta (\w+)", HANDLER_PAGE, re.M)
        fields = [[record[int(at):int(at) + 2] for at in text.split(",")] for text, _ in offsets]
        self.assertEqual([name for _, name in offsets], ["mode", "address", "subnet", "gateway"])
        self.assertEqual([[int(field, 16) for field in group] for group in fields],
                         [[0], [192, 168, 1, 10], [255, 255, 255, 0], [192, 168, 1, 1]])
        self.assertIn(b"\naddress1=192.168.001.010/24,", read(self.path("ethernet.nmconnection")))

    def test_nothing_in_the_home_but_a_driver_s_cache(self):
        home = os.path.join(self.folder, "home")
        os.mkdir(home)
        program = self.run_debug(environment={"HOME": home, "XDG_CACHE_HOME": home + "/.cache"})
        program.button("Save And Exit")
        self.assertEqual(program.finish(), 0)
        left = [os.path.join(folder, name) for folder, _, names in os.walk(home) for name in names]
        self.assertEqual([path for path in left if not path.startswith(home + "/.cache/mesa")], [])


class Use(ManualCase):
    """OPTIONS, EXIT STATUS, KEYBOARD, BUGS."""

    def test_unknown_option(self):
        program = self.run_production("--version")
        self.assertEqual(program.finish(), 1)
        self.assertIn("Unknown option --version", program.errors)
        self.assert_requests(UNLOCK, ROLLBACK)

    def test_signal_ends_debug_mode(self):
        program = self.run_debug()
        program.look()
        os.kill(program.process.pid, signal.SIGTERM)
        self.assertEqual(program.finish(), -signal.SIGTERM)
        self.assert_requests()

    def test_several_windows_without_a_session_bus(self):
        environment = {"DBUS_SESSION_BUS_ADDRESS": "disabled:", "GTK_A11Y": "none"}
        programs = [self.run_debug(environment=environment) for _ in range(2)]
        wait_until(lambda: len(self.desktop.windows()) == 2, "two windows")
        for program in programs:
            program.process.kill()
            program.finish()

    def test_keys_that_do_nothing_in_an_entry(self):
        self.put("ethernet.nmconnection", expected("ethernet-static"))
        program = self.run_debug()
        for key in ("Return", "Escape"):
            program.focus_and_press("text box", "IP Address", key)
            self.assertEqual(program.focused(), ("text box", "IP Address"))
        self.assertIsNone(program.dialog())
        self.assertNotIn("being validated", program.output)
        program.close()
        self.assertEqual(program.finish(), 0)


class Pages(unittest.TestCase):
    """What the pages name stands in the source, and the other way round."""

    @classmethod
    def setUpClass(cls):
        names = glob.glob(os.path.join(SOURCES, "src", "**", "*.*"), recursive=True)
        cls.source = {os.path.relpath(name, SOURCES): read(name).decode() for name in names}
        cls.literals = {text for source in cls.source.values() for text in literals(source)}

    def assert_in_source(self, text):
        self.assertTrue(any(text in literal for literal in self.literals),
                        f"{text!r} is not printed")

    def test_what_the_program_prints(self):
        printed = [text for line in re.findall(r"^\.It (Sy .*)", PROGRAM_PAGE, re.M)
                   for text in arguments(line, "Sy")]
        self.assertGreater(len(printed), 40)
        for text in printed:
            with self.subTest(text):
                # perror() adds a colon of its own.
                self.assert_in_source(text.removesuffix(":"))

    def test_every_error_is_explained(self):
        call = re.compile(r'\b(?:logError|perror)\(((?:[^;"]|"(?:\\.|[^"\\])*")*)\);')
        calls = [found for source in self.source.values() for found in call.findall(source)]
        texts = [text.strip() for call in calls for text in literals(call)]
        self.assertGreater(len(texts), 20)
        listed = "".join(re.findall(r"^\.It Sy .*\n", PROGRAM_PAGE, re.M)).replace("\\(aq", "'")
        for text in texts:
            with self.subTest(text):
                self.assertIn(f'"{text}', listed)

    def test_texts_of_the_window(self):
        for page in (PROGRAM_PAGE, HANDLER_PAGE):
            texts = [text for line in re.findall(r"^\.(?:It )?(Dq .*)", page, re.M)
                     for text in arguments(line, "Dq")]
            self.assertGreater(len(texts), 3)
            for text in texts:
                with self.subTest(text):
                    self.assertIn(text, self.literals)

    def test_default_files(self):
        files = [re.search(r'_KEYFILE = \{\n *"[\w.]+",\n([^;]*)\};', self.source[source])[1]
                 for source in ("src/settings/ethernet.cc", "src/settings/wifi.cc")]
        files = ["".join(re.findall('"(.*)"', code)).replace("\\n", "\n") for code in files]
        shown = re.findall(r"^\.Bd [^\n]*\n(\[connection\].*?)\n\.Ed$", HANDLER_PAGE, re.M | re.S)
        self.assertEqual(shown, files)

    def test_every_action_variable_and_path_is_named(self):
        everything = "\n".join(self.source.values())
        names = (re.findall(r'unPermissionsHandler\("(\w+)"', everything)
                 + re.findall(r'getenv\("(\w+)"\)', everything)
                 + [text.lstrip("/") for text in self.literals
                    if re.match(r"/[\w./-]{3,}$|\w+\.nmconnection$", text)])
        for name in ("unlock", "finalize_wifi", "tmp/ethernetUpdateSettings", "wlan0.nmconnection",
                     "ZOR_NETWORKMANAGER_DEBUG_PATH"):
            self.assertIn(name, names)
        for name in names:
            with self.subTest(name):
                self.assertIn(name, PROGRAM_PAGE + HANDLER_PAGE)
        for action in re.findall(r'unPermissionsHandler\("(\w+)"', everything):
            self.assertRegex(HANDLER_PAGE, rf"\n\.It Cm {action}\b")

    def test_keys_that_are_written(self):
        _, access_point, client = re.split(r"(?:accessPoint|client)Entries\(const WifiSettings",
                                           self.source["src/settings/wifi.cc"])
        constants = {name: value for source in ("ethernet", "wifi") for name, value in
                     re.findall(r'string_view (\w+) = "(.*)"',
                                self.source[f"src/settings/{source}.h"])}
        for heading, code in (("Wired", self.source["src/settings/ethernet.cc"]),
                              ("Access point", access_point), ("Client", client)):
            with self.subTest(heading):
                table = re.search(rf"^\.Ss {heading}$(.*?)^\.El$", HANDLER_PAGE, re.M | re.S)[1]
                listed = re.findall(r"^\.It ([\w-]+) Ta ([\w-]+) Ta (.*)", table, re.M)
                written = re.findall(r'\{"([\w-]+)", "([\w-]+)", (.*?)\}', code)
                self.assertEqual([row[:2] for row in listed], [row[:2] for row in written])
                for (_, key, value), (*_, expression) in zip(listed, written):
                    name = re.sub(r"std::string\((\w+)\)", r"\1", expression)
                    if name.startswith('"') or name in constants:
                        self.assertEqual(value, constants.get(name, name.strip('"')), key)

    def test_numbers(self):
        window = self.source["src/window/view.cc"]
        sizes = {name: int(value) for name, value in
                 re.findall(r"constexpr int (\w+(?:WIDTH|HEIGHT)) = (\d+);", window)}
        width = sizes.pop("WINDOW_WIDTH")
        self.assertIn(f"up to {width} by {max(sizes.values())} pixels", PROGRAM_PAGE)
        (pause,) = re.findall(r"PAUSE_AFTER_UNLOCK\{(\d+)\}", self.source["src/app/main.cc"])
        for page in (PROGRAM_PAGE, HANDLER_PAGE):
            self.assertIn(f"{pause} milliseconds", page)
        (value,) = re.findall(r"LONGEST_VALUE = (\d+);",
                              self.source["src/app/NetworkManagerConfig.h"])
        self.assertIn(f"up to {value} bytes", PROGRAM_PAGE)
        (line,) = re.findall(r"define INI_BUFFERSIZE (\d+)", self.source["src/ini/ini.h"])
        self.assertIn(f"lines of a keyfile up to {int(line) - 1} bytes", PROGRAM_PAGE)


def literals(code):
    """The string literals of a piece of C++; neighbours count as one."""
    one = r'"(?:\\.|[^"\\\n])*"'
    return [re.sub(r"\\(.)", r"\1", "".join(part[1:-1] for part in re.findall(one, text)))
            for text in re.findall(rf"{one}(?:\s*{one})*", code)]


def arguments(line, macro):
    """What a macro is applied to on a line of a manual page, without escapes."""
    quoted = re.findall(rf'\b{macro} (?:"([^"]*)"|(\S+))', line)
    return [(long or short).replace("\\(aq", "'").strip() for long, short in quoted]


program_case.main()
