# SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
# SPDX-License-Identifier: MIT
"""What the manual pages and the README say of the program, as far as no other test shows it."""
import os
import re
import shutil
import signal
import subprocess

from tests.program import transcripts as said
from tests.support import program_case
from tests.support.desktop import bound_to_us
from tests.support.files import SAMPLES, UPDATE_RECORD, expected, read, source
from tests.support.isolation import SYSTEM_CONNECTIONS
from tests.support.limit import wait_until

UNLOCK, ROLLBACK = ["unlock"], ["rollback"]
WINDOW_IS_BUILT = "no manual settings to populate.\n"
# The 200 milliseconds, made longer: a busy machine may take that long to start a shell script. What
# is traced cannot be searched for leaks.
LONGER_PAUSE = {"wrapper": ["strace", "-qq", "-o", "/dev/null", "-e", "trace=clock_nanosleep",
                            "-e", "inject=clock_nanosleep:delay_enter=2000000"],
                "environment": {"ASAN_OPTIONS": "detect_leaks=0"}}

FORMATS_PAGE = source("data", "man", "zor-network-manager.5")


class ManualCase(program_case.ProgramCase):

    def replace_handler(self, script):
        """Puts a shell script in the recorder's place."""
        self.recorder.replace(script.format(folder=self.folder))

    def mark(self, name):
        """The path of a file by which the scripts and the test tell each other something."""
        return os.path.join(self.folder, name)

    def assert_requests(self, *calls):
        # Streams are shared with the requests: they have ended when the program's are closed.
        self.assertCountEqual(self.recorder.calls(), list(calls))


class Requests(ManualCase):
    """ACTIONS: what is asked when, and what is not."""

    def test_finished_ones_remain_as_zombies(self):
        program = self.run_program()
        program.look()
        pid = program.process.pid
        (child,) = read(f"/proc/{pid}/task/{pid}/children").split()
        wait_until(lambda: b"\nState:\tZ" in read(f"/proc/{child.decode()}/status"), "a zombie")
        program.close()
        self.assertEqual(program.finish(), 0)

    def test_script_without_an_interpreter_is_run_by_the_shell(self):
        self.replace_handler("echo $1 >> {folder}/requests\n")
        program = self.run_program()
        program.close()
        self.assertEqual(program.finish(), 0)
        self.assertEqual(read(self.mark("requests")), b"unlock\nrollback\n")

    def test_unlock_counts_only_in_time(self):
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

    def test_nothing_is_asked_after_a_kill_or_a_fault(self):
        for number in (signal.SIGKILL, signal.SIGSEGV):
            with self.subTest(signal=number):
                self.recorder.forget()
                # A sanitizer would turn the fault into an exit of its own.
                program = self.run_program(
                    wrapper=["sh", "-c", 'ulimit -c 0; exec "$@"', "sh"],
                    environment={"ASAN_OPTIONS": "detect_leaks=0:handle_segv=0"})
                program.look()
                os.kill(program.process.pid, number)
                self.assertEqual(program.finish(), -number)
                self.assert_requests(UNLOCK)
                program.__exit__()

    def test_rollback_is_asked_after_a_signal_in_the_pause(self):
        for name in ("HUP", "INT", "TERM"):
            with self.subTest(signal=name):
                self.replace_handler(f"#!/bin/sh\necho $1 >> {{folder}}/{name}\n"
                                     f"[ $1 = rollback ] || kill -{name} $PPID\n")
                program = self.run_program(**LONGER_PAUSE)
                self.assertEqual(program.finish(), 0)
                self.assertEqual(program.output,
                                 said.start(SYSTEM_CONNECTIONS, said.PRODUCTION))
                self.assertEqual(read(self.mark(name)), b"unlock\nrollback\n")

    def test_nothing_is_asked_when_the_x_server_goes(self):
        # The toolkit ends the process itself. A Wayland compositor that goes has the same effect.
        reader, writer = os.pipe()
        server = subprocess.Popen(bound_to_us("Xvfb", "-displayfd", str(writer)),
                                  pass_fds=[writer], stderr=subprocess.DEVNULL)
        self.addCleanup(server.wait)
        self.addCleanup(server.kill)
        os.close(writer)
        with open(reader, "rb") as announcement:
            display = announcement.readline().decode().strip()
        program = self.run_program(environment={"DISPLAY": ":" + display, "G_DEBUG": ""})
        program.wait_for_output(WINDOW_IS_BUILT)
        server.kill()
        self.assertEqual(program.finish(), 1)
        self.assert_requests(UNLOCK)


class Files(ManualCase):
    """THE KEYFILES, THE UPDATE RECORD, FILES."""

    def test_record_is_as_in_the_example(self):
        (example,) = re.findall(r"^[0-9A-F]{2}(?: [0-9A-F]{2}){12}$", FORMATS_PAGE, re.M)
        self.put("ethernet.nmconnection", expected("ethernet-static"))
        program = self.run_debug()
        program.fill("IP Address", "192.168.001.010")
        program.button("Save And Exit")
        self.assertEqual(program.finish(), 0)
        record = read(UPDATE_RECORD).decode()
        self.assertEqual(record, example + " ")
        self.assertEqual(len(record), 39)
        offsets = re.findall(r"^\.It ([\d, ]+) Ta [\d to]+ Ta (\w+)", FORMATS_PAGE, re.M)
        fields = [[record[int(at):int(at) + 2] for at in text.split(",")] for text, _ in offsets]
        self.assertEqual([name for _, name in offsets], ["mode", "address", "subnet", "gateway"])
        self.assertEqual([[int(field, 16) for field in group] for group in fields],
                         [[0], [192, 168, 1, 10], [255, 255, 255, 0], [192, 168, 1, 1]])
        self.assertIn(b"\naddress1=192.168.001.010/24,", read(self.path("ethernet.nmconnection")))

    def test_record_is_not_written_through_a_link(self):
        target = self.put("target", "mine", self.folder)
        os.symlink(target, UPDATE_RECORD)
        program = self.run_debug()
        program.button("Save And Exit")
        self.assertEqual(program.finish(), 0)
        self.assertEqual(program.errors, "Error: Unable to create the file.\n")
        self.assertEqual(read(target), b"mine")
        self.assert_requests(["finalize_ethernet", "ethernet"])

    def test_nothing_stays_in_the_home_but_a_driver_s_cache(self):
        home = os.path.join(self.folder, "home")
        os.mkdir(home)
        program = self.run_debug(environment={"HOME": home, "XDG_CACHE_HOME": home + "/.cache"})
        program.button("Save And Exit")
        self.assertEqual(program.finish(), 0)
        left = [os.path.join(folder, name) for folder, _, names in os.walk(home) for name in names]
        self.assertEqual([path for path in left if not path.startswith(home + "/.cache/mesa")], [])


class Readme(ManualCase):

    def test_line_to_run_a_build_by_hand_opens_the_window(self):
        before, line = re.findall(r"^meson setup .* && (cp .*)\n(.*)$", source("README.md"), re.M)[0]
        shutil.copytree(SAMPLES, self.mark("tests/keyfiles/samples"))
        os.mkdir(self.mark("build"))
        os.symlink(self.program, self.mark("build/zor-network-manager"))
        subprocess.run(before, shell=True, check=True, cwd=self.folder)
        program = self.run_program(wrapper=["sh", "-c", line], cwd=self.folder)
        self.assertEqual(program.page(), "Ethernet")
        program.close()
        self.assertEqual(program.finish(), 0)
        self.assertIn("NetworkManagerDirectoryPath: build/keyfiles\n", program.output)


class Use(ManualCase):
    """OPTIONS, EXIT STATUS, KEYBOARD, BUGS."""

    def test_unknown_option_ends_with_status_1(self):
        program = self.run_program("--version")
        self.assertEqual(program.finish(), 1)
        self.assertIn("Unknown option --version", program.errors)
        self.assert_requests(UNLOCK, ROLLBACK)

    def test_signal_ends_debug_mode(self):
        program = self.run_debug()
        program.look()
        os.kill(program.process.pid, signal.SIGTERM)
        self.assertEqual(program.finish(), -signal.SIGTERM)
        self.assert_requests()

    def test_several_windows_open_without_a_session_bus(self):
        environment = {"DBUS_SESSION_BUS_ADDRESS": "disabled:", "GTK_A11Y": "none"}
        programs = [self.run_debug(environment=environment) for _ in range(2)]
        wait_until(lambda: len(self.desktop.windows()) == 2, "two windows")
        for program in programs:
            program.process.kill()
            program.finish()

    def test_return_and_escape_do_nothing_in_an_entry(self):
        self.put("ethernet.nmconnection", expected("ethernet-static"))
        program = self.run_debug()
        for key in ("Return", "Escape"):
            program.focus_and_press("text box", "IP Address", key)
            self.assertEqual(program.focused(), ("text box", "IP Address"))
        self.assertIsNone(program.dialog())
        self.assertNotIn("being validated", program.output)
        program.close()
        self.assertEqual(program.finish(), 0)


program_case.main()
