"""A tree of its own to change, build and test in: what a trial of a mutation needs."""
import os
import pwd
import re
import shutil
import signal
import subprocess
import tempfile
import time

TEST_USER = "nobody"  # root's rights would hide what the tests look at
OF_CTEST = "ctest:"  # before the name of a test that is no program of the build
BEGUN, ENDED = re.compile(r"\[ RUN +\] (\S+)"), re.compile(r"\[ +(OK|SKIPPED|FAILED) +\]")


class Refused(Exception):
    """There is nothing to measure: the tree does not build, or its tests fail as they stand."""


def tracked_files(root):
    """What git knows and what it does not ignore, as it stands; everything, where there is no git."""
    listed = subprocess.run(
        ["git", "ls-files", "-co", "--exclude-standard", "-z"], cwd=root, capture_output=True, check=False
    )
    if listed.returncode == 0:
        return sorted(name for name in os.fsdecode(listed.stdout).split("\0") if (root / name).is_file())
    return sorted(path.relative_to(root).as_posix() for path in root.rglob("*") if path.is_file())


def mirror(root, tree):
    """Makes the copy equal; what is equal already keeps its time, so that it is not built again."""
    names = tracked_files(root)
    for name in names:
        source, target = root / name, tree / name
        if not target.is_file() or target.read_bytes() != source.read_bytes():
            target.parent.mkdir(parents=True, exist_ok=True)
            shutil.copyfile(source, target)
            shutil.copymode(source, target)
    kept = set(names)
    for path in tree.rglob("*"):
        name = path.relative_to(tree).as_posix()
        if path.is_file() and not name.startswith("build/") and name not in kept:
            path.unlink()


class Workplace:
    """A copy of the tree with a build folder. One mutation at a time stands in it, and none when the next begins."""

    def __init__(self, root, folder, preset, definitions):
        self.tree = folder / "tree"
        self.build = self.tree / "build" / preset
        self.log = folder / "output.log"
        self.preset, self.definitions, self.running, self.stopped = preset, definitions, None, False
        mirror(root, self.tree)

    def configure(self):
        command = ["cmake", "--preset", self.preset, *(f"-D{each}" for each in self.definitions)]
        if self.run(command, self.tree, None) != 0:
            raise Refused(f"cmake fails:\n{self.output()}")
        if os.getuid() == 0:  # what the tests make
            fixtures = self.tree / "build" / "fixtures"
            fixtures.mkdir(exist_ok=True)
            shutil.chown(fixtures, TEST_USER)

    def builds(self, target):
        if target.startswith(OF_CTEST):
            return True
        return self.run(["ninja", "-C", self.build, target], self.tree, None) == 0

    def output(self):
        return self.log.read_text(encoding="utf-8", errors="replace")

    def run(self, command, folder, limit, environment=None):
        """Its exit status; None after the time limit. Nothing that it started stays behind."""
        with open(self.log, "wb") as log:
            process = subprocess.Popen(
                command, cwd=folder, stdin=subprocess.DEVNULL, stdout=log, stderr=log, env=environment, start_new_session=True
            )
            self.running = process
            if self.stopped:
                kill_group(process)
            try:
                status = process.wait(limit)
            except subprocess.TimeoutExpired:
                status = None
            finally:
                self.running = None
                kill_group(process)
                process.wait()
        if self.stopped:
            raise KeyboardInterrupt
        return status

    def stop(self):
        self.stopped = True
        if self.running:
            kill_group(self.running)

    def test(self, program, limit, *arguments):
        """As ./test runs it: as an unprivileged user, in a home of his own."""
        with tempfile.TemporaryDirectory(prefix="mutation-home-") as home:
            environment = dict(os.environ, HOME=home, TMPDIR=home, QT_QPA_PLATFORM="offscreen")
            command = [self.build / "bin" / program, "--gtest_fail_fast", *arguments]
            of_ctest = program.startswith(OF_CTEST)
            if of_ctest:
                name = re.escape(program.removeprefix(OF_CTEST))
                command = ["ctest", "--test-dir", self.build, "--no-tests=error", "-R", f"^{name}$"]
            if os.getuid() == 0 and not of_ctest:  # ctest writes into the build folder, which is root's
                user = pwd.getpwnam(TEST_USER)
                os.chown(home, user.pw_uid, user.pw_gid)
                environment.update(USER=TEST_USER, LOGNAME=TEST_USER)
                command = ["setpriv", f"--reuid={user.pw_uid}", f"--regid={user.pw_gid}", "--clear-groups", *command]
            return self.run(command, self.build, limit, environment)

    def notices(self, program, limit):
        """Which test of a program fails, if one does: twice, since some fail now and then on a crowded machine."""
        status = self.test(program, limit)
        if status == 0:
            return None
        if status is None:
            return f"{program} (hangs)"
        failed = failed_test(self.output())
        if failed and self.test(program, limit, f"--gtest_filter={failed}") != 0:
            return failed
        return failed or program if self.test(program, limit) != 0 else None

    def trial(self, mutation, programs, limits):
        """What notices the mutation, None when nothing does, False when it does not compile."""
        path = self.tree / mutation.path
        original = path.read_text(encoding="utf-8")
        try:
            path.write_text(mutation.applied_to(original), encoding="utf-8")
            for program in programs:
                if not self.builds(program):
                    return False
                noticed = self.notices(program, limits[program])
                if noticed:
                    return noticed
            return None
        finally:
            path.write_text(original, encoding="utf-8")

    def baseline(self, programs):
        """How long each program takes as the tree stands, in seconds."""
        taken = {}
        for program in programs:
            if not self.builds(program):
                raise Refused(f"{program} does not build:\n{self.output()}")
            start = time.monotonic()
            failed = self.notices(program, None)
            if failed:
                raise Refused(f"{program} fails without any change, in {failed}:\n{self.output()[-3000:]}")
            taken[program] = time.monotonic() - start
        return taken


def failed_test(output):
    """The first test that failed in a program of GoogleTest, or the one that it was in when it crashed."""
    begun = None
    for line in output.splitlines():
        if found := BEGUN.match(line):
            begun = found.group(1)
        elif ended := ENDED.match(line):
            if ended.group(1) == "FAILED":
                return begun
            begun = None
    return begun


def kill_group(process):
    try:
        os.killpg(process.pid, signal.SIGKILL)
    except ProcessLookupError:
        pass
