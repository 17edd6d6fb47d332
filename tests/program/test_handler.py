# SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
# SPDX-License-Identifier: MIT
"""How the privileged program is called, and what happens when that goes wrong."""
import os
import re
import signal

from tests.program import transcripts as said
from tests.support import program_case
from tests.support.desktop import wait_until
from tests.support.files import read
from tests.support.isolation import SYSTEM_CONNECTIONS
from tests.support.recorder import NAME

PRODUCTION_START = said.start(SYSTEM_CONNECTIONS, said.PRODUCTION)
NOT_FOUND = f"Failed to execute {NAME}: No such file or directory\n"
CALLING = "Calling permissions handler action: "


def disable_wifi(program):
    """Saves "Disabled"."""
    program.show_page("Wifi")
    program.pick("Disabled")
    program.button("Save And Exit")


class PermissionsHandler(program_case.ProgramCase):

    def setUp(self):
        super().setUp()
        self.use_samples(SYSTEM_CONNECTIONS)

    def replace_handler(self, script):
        """Puts a shell script in the recorder's place."""
        with open(self.recorder.path, "w", encoding="utf-8") as file:
            file.write("#!/bin/sh\n" + script)

    def trace(self, calls, act, *arguments):
        """The trace of a run's system calls, with the paths of descriptors."""
        log = os.path.join(self.folder, "trace")
        program = self.run_program(*arguments, wrapper=[
            "strace", "-f", "-y", "-s", "200", "-o", log,
            "-e", f"trace={calls}", "-e", "signal=none"])
        act(program)
        self.assertEqual(program.finish(), 0)
        return read(log).decode()

    def vectors(self, act, *arguments):
        """All its argument vectors of a run, with the name that it is given."""
        trace = self.trace("execve", act, *arguments)
        return sorted(re.findall(rf'execve\("{re.escape(self.recorder.path)}", (\[.*?\]),', trace))

    def steps_of_save(self, name, act):
        """What a save does to a keyfile from its last write on, and the request, in this order."""
        trace = self.trace("write,?unlink,unlinkat,fsync,execve", act, "1")
        path, folder = re.escape(self.path(name)), re.escape(self.connections)
        kinds = {
            "write": rf"write\(\d+<{path}>",
            "unlink": rf'unlink(at)?\(.*"{path}"',
            "flush file": rf"fsync\(\d+<{path}>",
            "flush folder": rf"fsync\(\d+<{folder}>",
            "request": rf'execve\("{re.escape(self.recorder.path)}"'}
        steps = [kind for line in trace.splitlines()
                 for kind, pattern in kinds.items() if re.search(pattern, line)]
        return steps[max(steps.index("request") - 3, 0):]

    def test_wired_save_is_on_the_disk_before_the_request(self):
        steps = self.steps_of_save("ethernet.nmconnection",
                                   lambda program: program.button("Save And Exit"))
        self.assertEqual(steps, ["write", "flush file", "flush folder", "request"])

    def test_wireless_save_is_on_the_disk_before_the_request(self):
        def save(program):
            program.show_page("Wifi")
            program.button("Save And Exit")

        steps = self.steps_of_save("wlan0.nmconnection", save)
        self.assertEqual(steps, ["write", "flush file", "flush folder", "request"])

    def test_removal_is_on_the_disk_before_the_request(self):
        steps = self.steps_of_save("wlan0.nmconnection", disable_wifi)
        self.assertEqual(steps, ["unlink", "flush folder", "request"])

    def test_vectors_of_a_production_run(self):
        self.assertEqual(self.vectors(lambda program: program.button("Exit Without Saving")),
                         [f'["{NAME}", "rollback"]', f'["{NAME}", "rollback"]',
                          f'["{NAME}", "unlock"]'])

    def test_vector_with_an_id(self):
        self.assertEqual(self.vectors(lambda program: program.button("Save And Exit"), "1"),
                         [f'["{NAME}", "finalize_ethernet", "ethernet"]'])

    def test_vector_without_an_id(self):
        self.assertEqual(self.vectors(disable_wifi, "1"), [f'["{NAME}", "finalize_wifi"]'])

    def test_found_in_a_later_folder_of_the_path(self):
        empty = os.path.join(self.folder, "empty")
        os.mkdir(empty)
        program = self.run_debug(environment={"PATH": f"{empty}:{self.recorder.bin}"})
        program.button("Exit Without Saving")
        self.assert_ended(program, said.start(self.connections) + said.CLOSED_WITHOUT_SAVING,
                          calls=[["rollback"]])

    def test_not_on_the_path(self):
        os.remove(self.recorder.path)
        program = self.run_program(environment={"PATH": self.recorder.bin})
        program.button("Exit Without Saving")
        self.assert_ended(program, PRODUCTION_START + said.CLOSED_WITHOUT_SAVING, 3 * NOT_FOUND)

    def test_not_on_the_path_when_saving(self):
        os.remove(self.recorder.path)
        program = self.run_program(environment={"PATH": self.recorder.bin})
        program.show_page("Wifi")
        program.button("Save And Exit")
        self.assert_ended(program, PRODUCTION_START + said.SHOW_WIFI
                          + said.wifi_mode_check("infrastructure", "infrastructure")
                          + "Wifi Device name: wlan0\n", 3 * NOT_FOUND)

    def test_not_executable(self):
        os.chmod(self.recorder.path, 0o600)
        program = self.run_debug(environment={"PATH": self.recorder.bin})
        program.button("Exit Without Saving")
        self.assert_ended(program, said.start(self.connections) + said.CLOSED_WITHOUT_SAVING,
                          f"Failed to execute {NAME}: Permission denied\n")

    def test_failure_is_not_looked_at(self):
        self.replace_handler("echo to its own output; echo no >&2; exit 3\n")
        program = self.run_debug()
        program.button("Exit Without Saving")
        self.assertEqual(program.finish(), 0)
        self.assertCountEqual(program.output.splitlines(),
                              (said.start(self.connections) + said.CLOSED_WITHOUT_SAVING
                               + "to its own output").splitlines())
        self.assertEqual(program.errors, "no\n")

    def test_not_waited_for(self):
        pids = os.path.join(self.folder, "pids")
        self.replace_handler(f"echo $$ >> {pids}\nexec sleep 1000 >/dev/null 2>&1\n")

        def end_all():
            for pid in read(pids).split():
                os.kill(int(pid), signal.SIGKILL)

        self.addCleanup(end_all)
        program = self.run_program()
        program.button("Save And Exit")
        self.assertEqual(program.finish(), 0)
        self.assertEqual(program.output, PRODUCTION_START
                         + said.ethernet_mode_check("auto", "auto") + said.RECORD_WRITTEN)
        wait_until(lambda: len(read(pids).split()) == 3, "three requests")

    def test_inherits_what_the_program_was_given(self):
        # Not what the program sets for itself: an ignored SIGPIPE, private files.
        report = os.path.join(self.folder, "report")
        self.replace_handler(f"{{ umask; grep SigIgn /proc/$$/status; pwd; }} > {report}\n")
        program = self.run_debug(wrapper=["sh", "-c", 'umask 027; exec "$@"', "sh"],
                                 cwd=self.connections)
        program.button("Save And Exit")
        self.assertEqual(program.finish(), 0)
        umask, ignored, folder = read(report).decode().splitlines()
        self.assertEqual(int(umask, 8), 0o027)
        self.assertEqual(int(ignored.split()[1], 16) >> (signal.SIGPIPE - 1) & 1, 0)
        self.assertEqual(folder, os.path.realpath(self.connections))
        self.assertEqual(os.stat(program_case.UPDATE_RECORD).st_mode & 0o777, 0o640)

    # The child's own line is not flushed: a terminal shows it, a pipe (all other tests) does not.

    def assert_on_terminal(self, program, actions, errors):
        self.assertEqual(program.finish(), 0)
        lines = program.output.splitlines()
        self.assertCountEqual([line for line in lines if line.startswith(CALLING)],
                              [CALLING + action for action in actions])
        self.assertEqual([line for line in lines if not line.startswith(CALLING)],
                         (PRODUCTION_START + said.CLOSED_WITHOUT_SAVING).splitlines())
        self.assertEqual(program.errors, errors)

    def test_line_of_the_child_on_a_terminal(self):
        program = self.run_program(stdout="terminal")
        program.look()
        self.assertLess(program.output.index(CALLING + "unlock\n"),
                        program.output.index("NetworkManagerDirectoryPath"))
        program.button("Exit Without Saving")
        self.assert_on_terminal(program, ["unlock", "rollback", "rollback"], "")
        self.assertCountEqual(self.recorder.calls(), [["unlock"], ["rollback"], ["rollback"]])

    def test_line_of_the_child_on_a_terminal_when_it_cannot_be_executed(self):
        os.remove(self.recorder.path)
        program = self.run_program(stdout="terminal", environment={"PATH": self.recorder.bin})
        program.button("Exit Without Saving")
        self.assert_on_terminal(program, ["unlock", "rollback", "rollback"], 3 * NOT_FOUND)


program_case.main()
