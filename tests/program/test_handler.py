# SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
# SPDX-License-Identifier: MIT
"""How the privileged program is called, and what happens when that goes wrong."""
import os
import re
import signal
import tempfile

from tests.program import transcripts as said
from tests.support import program_case
from tests.support.files import UPDATE_RECORD, read
from tests.support.isolation import SYSTEM_CONNECTIONS
from tests.support.limit import wait_until
from tests.support.recorder import NAME

PRODUCTION_START = said.start(SYSTEM_CONNECTIONS, said.PRODUCTION)
NOT_FOUND = f"Failed to execute {NAME}: No such file or directory\n"
CALLING = "Calling permissions handler action: "
# Makes all that is inherited unusual, and becomes the program: IGNORED BLOCKED COMMAND..., with two
# sets of signals as the system prints them.
PREPARE = """import os, resource, signal, sys
os.umask(0o027)
os.dup2(os.open("/dev/zero", os.O_RDONLY), 7)
def chosen(bits):
    return {number for number in signal.valid_signals() if int(bits, 16) >> (number - 1) & 1}
for number in signal.valid_signals() - {signal.SIGKILL, signal.SIGSTOP}:
    ignored = number in chosen(sys.argv[1])
    signal.signal(number, signal.SIG_IGN if ignored else signal.SIG_DFL)
signal.pthread_sigmask(signal.SIG_SETMASK, chosen(sys.argv[2]))
resource.setrlimit(resource.RLIMIT_FSIZE, (4321, 4321))
os.execvp(sys.argv[3], sys.argv[3:])
"""
# Keeps what it was given, in a folder that is complete as soon as it has its name. In Perl: a shell
# takes all blocks away when it starts, and Python ignores SIGPIPE.
REPORTER = """#!/usr/bin/perl
my $report = "{folder}/$ARGV[0]";
my @links = map {{ my $to = readlink "/proc/self/$_"; $to ? "$_ -> $to\\n" : () }}
    "cwd", map {{ "fd/$_" }} 0 .. 99;
mkdir "$report.part";
foreach my $name ("links", "environ", "limits", "stat", "status") {{
  open my $target, ">", "$report.part/$name";
  open my $source, "<", "/proc/self/$name";
  print $target $name eq "links" ? @links : <$source>;
}}
rename "$report.part", $report;
"""


class PermissionsHandler(program_case.ProgramCase):

    def test_missing_one_is_reported_at_each_request(self):
        os.remove(self.recorder.path)
        program = self.run_program(environment={"PATH": self.recorder.bin})
        program.button("Exit Without Saving")
        self.assert_ended(program, PRODUCTION_START + said.CLOSED_WITHOUT_SAVING, 3 * NOT_FOUND)

    def test_failure_is_not_looked_at(self):
        self.recorder.replace("#!/bin/sh\necho to its own output; echo no >&2; exit 3\n")
        program = self.run_debug()
        program.button("Exit Without Saving")
        self.assertEqual(program.finish(), 0)
        self.assertCountEqual(program.output.splitlines(),
                              (said.start(self.connections) + said.CLOSED_WITHOUT_SAVING
                               + "to its own output").splitlines())
        self.assertEqual(program.errors, "no\n")

    def test_requests_are_not_waited_for(self):
        pids = os.path.join(self.folder, "pids")
        self.recorder.replace(f"#!/bin/sh\necho $$ >> {pids}\nexec sleep 1000 >/dev/null 2>&1\n")

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

    def test_line_of_the_child_shows_on_a_terminal(self):
        # It is not flushed: a pipe (all other tests) does not show it.
        program = self.run_program(stdout="terminal")
        program.look()
        self.assertLess(program.output.index(CALLING + "unlock\n"),
                        program.output.index("NetworkManagerDirectoryPath"))
        program.button("Exit Without Saving")
        self.assertEqual(program.finish(), 0)
        lines = program.output.splitlines()
        self.assertCountEqual([line for line in lines if line.startswith(CALLING)],
                              [CALLING + action for action in ("unlock", "rollback", "rollback")])
        self.assertEqual([line for line in lines if not line.startswith(CALLING)],
                         (PRODUCTION_START + said.CLOSED_WITHOUT_SAVING).splitlines())
        self.assertEqual(program.errors, "")


def as_bits(*signals):
    """A set of signals as the system prints it."""
    return f"{sum(1 << (number - 1) for number in signals):016x}"


class Inherited(program_case.ProgramCase):
    """What a request is given: what the program was."""

    def reports(self, *wrapper, **options):
        """Runs production mode behind a command; returns the run, and a report for each action."""
        folder = tempfile.mkdtemp(dir=self.folder)
        self.recorder.replace(REPORTER.format(folder=folder))
        program = self.run_program(wrapper=wrapper, **options)
        program.look()
        self.given = read(f"/proc/{program.process.pid}/environ").decode().split("\0")
        program.button("Save And Exit")
        self.assertEqual(program.finish(), 0)
        folders = {action: os.path.join(folder, action)
                   for action in ("unlock", "finalize_ethernet", "rollback")}
        wait_until(lambda: all(map(os.path.isdir, folders.values())), "three reports")
        return program, {action: {name: read(folder, name).decode()
                                  for name in os.listdir(folder)}
                         for action, folder in folders.items()}

    def links(self, report):
        """What was open, but for the reporter's own text, and the working directory."""
        links = dict(re.findall("(.*) -> (.*)\n", report["links"]))
        return {name: target for name, target in links.items() if target != self.recorder.path}

    def test_all_is_inherited_but_what_the_program_sets(self):
        program, reports = self.reports(
            "/usr/bin/python3", "-c", PREPARE, as_bits(), as_bits(), cwd=self.connections,
            environment={"PATH": f"{self.recorder.bin}:/usr/bin:relative", "ODD": "two\nlines",
                         "DESKTOP_STARTUP_ID": "id"})
        self.assertIn("ODD=two\nlines", self.given)
        self.given.remove("DESKTOP_STARTUP_ID=id")  # which the toolkit takes out
        for action, report in reports.items():
            with self.subTest(action):
                self.assertEqual(report["environ"].split("\0"), self.given)
                links = self.links(report)
                self.assertEqual(sorted(links), ["cwd", "fd/0", "fd/1", "fd/2", "fd/7"])
                self.assertEqual(links["fd/7"], "/dev/zero")
                self.assertEqual(links["cwd"], os.path.realpath(self.connections))
                self.assertRegex(links["fd/1"], "^pipe:")
                self.assertRegex(report["limits"], r"\nMax file size\s+4321 ")
                status = dict(re.findall(r"(\w+):\s+(.*)\n", report["status"]))
                self.assertEqual(int(status["Umask"], 8), 0o027)
                _, _, group, session = report["stat"].rpartition(")")[2].split()[:4]
                self.assertEqual((int(group), int(session)), (os.getpgrp(), os.getsid(0)))
        self.assertRegex(reports["unlock"]["status"], rf"\nPPid:\s{program.process.pid}\n")
        self.assertEqual(os.stat(UPDATE_RECORD).st_mode & 0o777, 0o640)

    def test_signals_are_inherited_whatever_the_program_does_with_them(self):
        # Those that stop it, and those that a failing write raises, are the program's business.
        stops = (signal.SIGHUP, signal.SIGINT, signal.SIGTERM)
        for ignored, blocked in (((), ()),
                                 ((signal.SIGPIPE, signal.SIGUSR1), stops[:1]),
                                 ((signal.SIGXFSZ, *stops), (signal.SIGUSR2,)),
                                 ((signal.SIGHUP,), (signal.SIGPIPE, *stops[1:]))):
            with self.subTest(ignored=ignored, blocked=blocked):
                given = [as_bits(*ignored), as_bits(*blocked)]
                _, reports = self.reports("/usr/bin/python3", "-c", PREPARE, *given)
                for action, report in reports.items():
                    status = dict(re.findall(r"(\w+):\s+(.*)\n", report["status"]))
                    # Perl itself ignores that one.
                    found = int(status["SigIgn"], 16) & ~int(as_bits(signal.SIGFPE), 16)
                    self.assertEqual([f"{found:016x}", status["SigBlk"]], given, action)

    def test_closed_streams_are_open_on_the_null_device(self):
        _, reports = self.reports("sh", "-c", 'exec "$@" <&- >&- 2>&-', "sh")
        for report in reports.values():
            links = self.links(report)
            self.assertEqual([links.get(f"fd/{number}") for number in range(4)],
                             [*3 * ["/dev/null"], None])


program_case.main()
