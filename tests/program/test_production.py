# SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
# SPDX-License-Identifier: MIT
"""Production mode as a process: unlock, window, every way of leaving, rollback, exit status."""
import os
import re
import shutil
import signal

from tests.program import transcripts as said
from tests.support import program_case
from tests.support.files import read
from tests.support.isolation import SYSTEM_CONNECTIONS

START = said.start(SYSTEM_CONNECTIONS, said.PRODUCTION)
NO_FILES = said.start(SYSTEM_CONNECTIONS, said.PRODUCTION, "", "", said.dynamic_page(None))
NO_ETHERNET_FILE = "No ethernet connection file found; defaulting mode to dynamic (auto).\n"


class ProductionMode(program_case.ProgramCase):

    def setUp(self):
        super().setUp()
        self.connections = SYSTEM_CONNECTIONS

    def test_close_button_requests_rollback_once(self):
        program = self.run_program(environment={"ZOR_NETWORKMANAGER_DEBUG_PATH": self.folder})
        program.look()
        self.assertEqual(self.recorder.calls(), [["unlock"]])
        program.close()
        self.assert_ended(program, START, calls=[["unlock"], ["rollback"]])
        self.assert_samples_untouched()

    def test_exit_without_saving_requests_rollback_twice(self):
        program = self.run_program()
        program.button("Exit Without Saving")
        self.assert_ended(program, START + said.CLOSED_WITHOUT_SAVING,
                          calls=[["unlock"], ["rollback"], ["rollback"]])
        self.assert_samples_untouched()

    def test_save_is_followed_by_rollback(self):
        program = self.run_program()
        program.button("Save And Exit")
        self.assert_ended(program, START + said.ethernet_mode_check("auto", "auto")
                          + said.RECORD_WRITTEN,
                          calls=[["unlock"], ["finalize_ethernet", "ethernet"], ["rollback"]])

    def test_save_without_any_keyfile_makes_one(self):
        for name in os.listdir(SYSTEM_CONNECTIONS):
            os.remove(self.path(name))
        program = self.run_program()
        program.button("Save And Exit")
        self.assert_ended(
            program, NO_FILES + said.ethernet_mode_check("", "auto",
                                                         self.path("ethernet.nmconnection"))
            + said.RECORD_WRITTEN, NO_ETHERNET_FILE,
            [["unlock"], ["finalize_ethernet", "ethernet"], ["rollback"]])
        self.assertEqual(os.listdir(SYSTEM_CONNECTIONS), ["ethernet.nmconnection"])

    def test_missing_directory_is_reported(self):
        shutil.rmtree(SYSTEM_CONNECTIONS)
        program = self.run_program()
        self.assertEqual(program.page(), "Ethernet")
        program.close()
        self.assertEqual(program.finish(), 0)
        self.assertEqual(program.output, NO_FILES)
        error, rest = program.errors.split("\n", 1)
        self.assertRegex(error, "^Error: .*No such file or directory.*"
                         + re.escape(SYSTEM_CONNECTIONS))
        self.assertEqual(rest, NO_ETHERNET_FILE)
        self.assertEqual(self.recorder.calls(), [["unlock"], ["rollback"]])

    def test_other_first_arguments_select_production(self):
        # They reach the toolkit, which takes them for files, opens none and ends with status 1.
        for argument in ("0", "2", "true", "1 ", "01", "1.0", ""):
            with self.subTest(argument=argument):
                self.recorder.forget()
                program = self.run_program(argument, environment={"G_DEBUG": ""})
                self.assertEqual(program.finish(), 1)
                start = START[:START.index("Ethernet Path")]
                self.assertEqual(program.output, start)
                self.assertIn("can not open files", program.errors)
                self.assertEqual(self.recorder.calls(), [["unlock"], ["rollback"]])

    def test_toolkit_options_are_passed_on(self):
        program = self.run_program("--help-all")
        self.assertEqual(program.finish(), 0)
        self.assertTrue(program.output.startswith(START[:START.index("Ethernet Path")]))
        self.assertIn("Usage:", program.output)
        # Though the toolkit ends the process itself after its help.
        self.assertEqual(self.recorder.calls(), [["unlock"], ["rollback"]])

    def test_debug_word_in_second_place_is_none(self):
        program = self.run_program("--gapplication-app-id=org.gtkmm.example", "1",
                                      environment={"G_DEBUG": ""})
        program.finish()
        self.assertTrue(program.output.startswith(said.PRODUCTION))

    def test_missing_display_ends_with_status_1_and_rollback(self):
        program = self.run_program(environment={"DISPLAY": ":none", "G_DEBUG": ""})
        self.assertEqual(program.finish(), 1)
        self.assertRegex(program.errors.lower(), "(cannot|failed to) open display")
        self.assertEqual(self.recorder.calls(), [["unlock"], ["rollback"]])

    def test_signal_that_ends_a_session_closes_the_window(self):
        for number in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP):
            with self.subTest(signal=number):
                self.recorder.forget()
                program = self.run_program()
                program.look()
                os.kill(program.process.pid, number)
                self.assert_ended(program, START, calls=[["unlock"], ["rollback"]])

    def test_signal_that_was_ignored_stays_ignored(self):
        program = self.run_program(wrapper=["sh", "-c", "trap '' HUP; exec \"$@\"", "sh"])
        program.look()
        os.kill(program.process.pid, signal.SIGHUP)
        program.show_page("Wifi")
        os.kill(program.process.pid, signal.SIGTERM)
        self.assert_ended(program, START + said.SHOW_WIFI, calls=[["unlock"], ["rollback"]])

    def test_second_instance_ends_with_status_0(self):
        first = self.run_program()
        first.look()
        self.assertEqual(self.desktop.bus.owner("org.gtkmm.example"), first.process.pid)
        second = self.run_program()
        self.assertEqual(second.finish(), 0)
        self.assertEqual(second.output, START[:START.index("Ethernet Path")])  # builds no window
        self.assertEqual(len(self.desktop.windows()), 1)
        first.close()
        self.assertEqual(first.finish(), 0)
        self.assertCountEqual(self.recorder.calls(), 2 * [["unlock"], ["rollback"]])


class Drawing(program_case.ProgramCase):

    def test_no_graphics_driver_is_loaded_in_either_mode(self):
        for mode in ((), ("1",)):
            with self.subTest(mode):
                program = self.run_program(*mode)
                program.look()
                loaded = read(f"/proc/{program.process.pid}/maps").decode()
                self.assertNotRegex(loaded, r"/(lib\w+_mesa\.so|libgallium|libLLVM|\w+_dri\.so)")
                program.close()
                self.assertEqual(program.finish(), 0)
                self.assertEqual(program.errors, "")


class Startup(program_case.ProgramCase):
    """The order of steps and the pause, from the outside: system calls with their times."""

    def time_of(self, text):
        """When the first call was made that has a text in it."""
        for line in self.trace:
            if text in line:
                return float(line.split()[1])
        raise AssertionError(f"no {text} in the trace")

    def test_pause_follows_unlock_also_when_a_signal_interrupts_it(self):
        interruption = ["-e", "inject=clock_nanosleep:error=EINTR:when=1"]
        for injected in ([], interruption):
            with self.subTest(injected):
                log = os.path.join(self.folder, "trace")
                program = self.run_program(wrapper=[
                    "strace", "-f", "-ttt", "-s", "200", "-o", log, "-e", "signal=none",
                    "-e", "trace=execve,write,clock_nanosleep", *injected])
                program.close()
                self.assertEqual(program.finish(), 0)
                self.trace = read(log).decode().splitlines()
                self.assertEqual(any("(INJECTED)" in line for line in self.trace), bool(injected))
                first = self.time_of(f'write(1, "{said.PRODUCTION.strip()}')
                unlock = self.time_of('"unlock"]')
                directory = self.time_of('write(1, "NetworkManagerDirectoryPath: ')
                self.assertLess(first, unlock)
                self.assertLess(unlock, directory)
                self.assertGreaterEqual(directory - first, 0.2)


program_case.main()
