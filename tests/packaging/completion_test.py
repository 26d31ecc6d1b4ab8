#!/usr/bin/env python3
"""Completes command lines in bash, zsh and fish with the files that the build wrote for them.

usage: completion_test.py PAGES_FOLDER [unittest's own arguments]
"""
import os
import pathlib
import pty
import re
import subprocess
import sys
import tempfile
import time
import unittest

PAGES = pathlib.Path()
PATIENCE = 60  # seconds that a shell may take to start or to answer

FOLDERS = {"takes"}
MOVIES = {"a.mov", "b.MP4", "my movie.m4v"} | FOLDERS
FILES = MOVIES | {"notes.txt"}
SUBCOMMANDS = {"check", "scan", "info", "sync"}
CHECK = {"--help", "--at", "--source-at", "--dest-at", "--align", "--frames", "--tolerance", "--exit-zero", "--json", "--log"}
SCAN = {"--help", "--from", "--to", "--sample", "--no-align", "--csv", "--filter", "--lut", "--plot", "--proof", "--resume", "--exit-zero", "--json", "--log"}

# A line up to the cursor, and all that is offered there.
OFFERS = [
    ("lumacheck ", SUBCOMMANDS | MOVIES),
    ("lumacheck ch", {"check"}),
    ("lumacheck a", {"a.mov"}),
    ("lumacheck a.mov ", MOVIES),
    ("lumacheck a.mov ch", set()),
    ("lumacheck a.mov a.mov ", set()),
    ("lumacheck --", {"--help", "--version"}),
    ("lumacheck check --", CHECK),
    ("lumacheck check --s", {"--source-at"}),
    ("lumacheck check --json --", CHECK - {"--json"}),
    ("lumacheck check --json --j", set()),
    ("lumacheck check --at 1 --", CHECK - {"--at", "--source-at", "--dest-at"}),
    ("lumacheck check --at=1 --", CHECK - {"--at", "--source-at", "--dest-at"}),
    ("lumacheck check --source-at 1 --", CHECK - {"--at", "--source-at", "--align"}),
    ("lumacheck check --align --", CHECK - {"--align", "--frames", "--source-at"}),
    ("lumacheck check --at ", set()),
    ("lumacheck check --at 0", set()),
    ("lumacheck check --dest-at=", set()),
    ("lumacheck check --frames ", set()),
    ("lumacheck check --tolerance=", set()),
    ("lumacheck check --log ", FILES),
    ("lumacheck check --log=n", {"notes.txt"}),
    ("lumacheck check ", MOVIES),
    ("lumacheck check --at 1 ", MOVIES),
    ("lumacheck check a.mov ", MOVIES),
    ("lumacheck check a.mov --json m", {"my movie.m4v"}),
    ("lumacheck check a.mov a.mov ", set()),
    ("lumacheck check a.mov a.mov --j", {"--json"}),
    ("lumacheck check check ", MOVIES),
    ("lumacheck check -- --", set()),
    ("lumacheck scan --", SCAN),
    ("lumacheck scan a.mov --from 1 ", MOVIES),
    ("lumacheck scan --csv ", FILES),
    ("lumacheck scan --plot ", FILES),
    ("lumacheck scan --resume ", FILES),
    ("lumacheck scan --lut ", FILES),
    ("lumacheck scan --proof ", FILES),
    ("lumacheck info a.mov a.mov a.mov ", MOVIES),
    ("lumacheck info --", {"--help", "--json", "--log"}),
    ("lumacheck info --at", set()),
    ("lumacheck sync --", {"--help", "--save-as", "--dry-run", "--json", "--log"}),
    ("lumacheck sync a.mov a.mov --save-as ", FILES),
    ("lumacheck sync --save-as=n", {"notes.txt"}),
]


class Shell:
    """A folder with movies in it, in which lines are completed."""

    def __init__(self, program):
        self.home = tempfile.TemporaryDirectory()
        self.folder = pathlib.Path(self.home.name) / "folder"
        self.folder.mkdir()
        for name in FILES - FOLDERS:
            (self.folder / name).touch()
        for name in FOLDERS:
            (self.folder / name).mkdir()
        self.program = program
        self.environment = {"PATH": "/usr/bin:/bin", "HOME": self.home.name, "TERM": "dumb", "LC_ALL": "C.UTF-8",
                            "ZDOTDIR": self.home.name, "XDG_CONFIG_HOME": self.home.name, "XDG_DATA_HOME": self.home.name}

    def run(self, *arguments):
        run = subprocess.run([self.program, *arguments], cwd=self.folder, env=self.environment, timeout=PATIENCE, check=True,
                             stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        if run.stderr:
            raise AssertionError(run.stderr.decode())
        return run.stdout.decode().splitlines()

    def close(self):
        self.home.cleanup()


class Bash(Shell):
    SCRIPT = """
        source /usr/share/bash-completion/bash_completion
        source "$1"
        shift
        COMP_WORDS=("$@") COMP_CWORD=$(($# - 1)) COMP_TYPE=9 COMP_KEY=9
        COMP_LINE=$LINE COMP_POINT=${#LINE}
        compopt() { :; }  # only while a key completes
        function=$(complete -p lumacheck | sed 's/.* -F \\([^ ]*\\) .*/\\1/')
        "$function" lumacheck "${COMP_WORDS[COMP_CWORD]}" "${COMP_WORDS[COMP_CWORD - 1]}"
        ((${#COMPREPLY[@]} == 0)) || printf '%s\\n' "${COMPREPLY[@]}"
    """

    def __init__(self):
        super().__init__("bash")

    def offers(self, line):
        words = [word for word in re.split(r"[ ]+|(=)", line) if word]  # as bash breaks them
        self.environment["LINE"] = line
        if line[-1] in " =":
            words.append("")
        return self.run("--norc", "--noprofile", "-c", self.SCRIPT, "bash", PAGES / "lumacheck.bash", *words)


class Fish(Shell):
    def __init__(self):
        super().__init__("fish")

    def offers(self, line):
        offered = self.run("--no-config", "-c", 'source $argv[1]; complete -C $argv[2]', PAGES / "lumacheck.fish", line)
        return [each.split("\t")[0] for each in offered]


class Zsh(Shell):
    """Zsh completes at a terminal only: one is made, and each line typed into it."""
    START = """
        fpath=("$PAGES" $fpath)
        autoload -Uz compinit
        compinit -u -D
        PROMPT=
        compadd() {
          local -a shown
          if [[ -z ${(M)@:#-[OAD]} ]]; then
            builtin compadd -O shown "$@"
            (( $#shown == 0 )) || print -rl -- $shown >>$OFFERED
          fi
          builtin compadd "$@"
        }
        offer() {
          _main_complete
          compstate[insert]= compstate[list]=
        }
        zle -C offer list-choices offer
        done-offering() { print -r -- "done" >>$OFFERED; }
        zle -N done-offering
        bindkey -e
        bindkey '^I' offer
        bindkey '^T' done-offering
        done-offering
    """

    def __init__(self):
        super().__init__("zsh")
        self.offered = pathlib.Path(self.home.name) / "offered"
        (pathlib.Path(self.home.name) / ".zshrc").write_text(self.START)
        environment = self.environment | {"PAGES": str(PAGES), "OFFERED": str(self.offered)}
        self.process, self.terminal = pty.fork()
        if self.process == 0:
            os.chdir(self.folder)
            os.execvpe("zsh", ["zsh", "-o", "NO_GLOBAL_RCS", "-i"], environment)
        self.answer()

    def answer(self):
        end = time.monotonic() + PATIENCE
        while time.monotonic() < end:
            lines = self.offered.read_text().splitlines() if self.offered.exists() else []
            if lines and lines[-1] == "done":
                return lines[:-1]
            os.set_blocking(self.terminal, False)
            try:
                os.read(self.terminal, 65536)  # what it echoes
            except BlockingIOError:
                time.sleep(0.01)
        raise AssertionError("zsh does not answer")

    def offers(self, line):
        self.offered.unlink()
        os.set_blocking(self.terminal, True)
        os.write(self.terminal, b"\x15" + line.encode() + b"\t\x14")
        return self.answer()

    def close(self):
        os.close(self.terminal)
        os.waitpid(self.process, 0)
        super().close()


def plain(offer):
    """Without what a shell puts around a name: an option before it, a backslash in it, a slash or sign behind it."""
    return re.sub(r"\\(.)", r"\1", re.sub(r"^--[a-z-]+=(?=.)", "", offer)).rstrip("/=")


class Completion(unittest.TestCase):
    maxDiff = None

    def complete(self, shell, also=frozenset(), instead=()):
        """`also`: the files that this shell offers beside movies. `instead`: what it offers at some lines."""
        try:
            for line, expected in (dict(OFFERS) | dict(instead)).items():
                with self.subTest(line=line):
                    beginning = re.split("[ =]", line)[-1]
                    wanted = expected | {each for each in also if expected & MOVIES and each.startswith(beginning)}
                    offered = {plain(each) for each in shell.offers(line)}
                    self.assertEqual(offered - {"-h"}, wanted)
        finally:
            shell.close()

    def test_bash_offers_what_can_stand_there(self):
        self.complete(Bash())

    def test_zsh_offers_what_can_stand_there(self):
        # Where nothing else can stand it offers the options.
        self.complete(Zsh(), instead={"lumacheck check a.mov a.mov ": CHECK})

    def test_fish_offers_what_can_stand_there_and_every_file_for_a_movie(self):
        self.complete(Fish(), also={"notes.txt"})

    def test_each_file_is_read_by_its_shell_without_complaint(self):
        for shell, name in (("bash", "lumacheck.bash"), ("zsh", "_lumacheck"), ("fish", "lumacheck.fish")):
            run = subprocess.run([shell, "-n", PAGES / name], stderr=subprocess.PIPE, check=False)
            self.assertEqual((run.returncode, run.stderr), (0, b""), name)


if __name__ == "__main__":
    PAGES = pathlib.Path(sys.argv.pop(1)).resolve()
    unittest.main()
