#!/usr/bin/env python3
"""zan-op under faults: calls that fail, an ordinary user's rights, sudden death, rivals, signals."""
import filecmp
import json
import os
import pty
import random
import shutil
import signal
import subprocess
import sys
import tempfile

from harness import run, wait_for

ALWAYS_ON = ["--answer", ",".join(["1"] * 5000)]


class Ground:
    """Two directories, from/ and to/, and other/ on another file system; the program zan-op."""

    def __init__(self, bin_dir):
        self.op = os.path.abspath(os.path.join(bin_dir, "zan-op"))

    def __enter__(self):
        self.base = tempfile.mkdtemp(prefix="zan-faults-")
        self.other = tempfile.mkdtemp(prefix="zan-faults-", dir="/dev/shm")
        os.chmod(self.base, 0o755)
        self.clear()
        return self

    def __exit__(self, *_):
        shutil.rmtree(self.base)
        shutil.rmtree(self.other)

    def clear(self):
        self.shell(f"rm -rf -- * {self.other}/* && mkdir from to")

    def path(self, *parts):
        return os.path.join(self.base, *parts)

    def shell(self, command):
        subprocess.run(command, shell=True, cwd=self.base, check=True)

    def fill(self, name, size):
        with open(self.path(name), "wb") as out:
            out.write(random.randbytes(size))

    def command(self, kind, *names, to=None, options=()):
        destination = [] if kind == "delete" else ["--to", to or self.path("to")]
        return [self.op, kind, "--from", self.path("from"), *names, *destination, *options]

    def start(self, *arguments, **options):
        return subprocess.Popen(self.command(*arguments, **options), stdin=subprocess.DEVNULL,
                                stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)

    def operate(self, *arguments, before=(), **options):
        """Runs it and returns (exit status, alerts as (title, message), the end event)."""
        done = subprocess.run([*before, *self.command(*arguments, **options), "--json"], stdin=subprocess.DEVNULL,
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE, check=False)
        events = [json.loads(line) for line in done.stdout.splitlines()]
        assert events and events[-1]["event"] == "end", done
        return done.returncode, [(e["title"], e["message"]) for e in events if e["event"] == "alert"], events[-1]

    def plant(self, count, size):
        """Makes from/tree of random files; what they hold, by name."""
        files = {f"d{i % 5}/f{i}": random.randbytes(random.randrange(size)) for i in range(count)}
        for name, content in files.items():
            os.makedirs(os.path.dirname(self.path("from/tree", name)), exist_ok=True)
            with open(self.path("from/tree", name), "wb") as out:
                out.write(content)
        return files

    def nothing_is_lost(self, files):
        for name, content in files.items():
            assert any(whole_at(root, name, content) for root in (self.path("from"), self.other)), f"lost: {name}"


def whole_at(root, name, content):
    try:
        with open(os.path.join(root, "tree", name), "rb") as file:
            return file.read() == content
    except OSError:
        return False


def tracer(*options):
    """The prefix of a command whose system calls fail as told; None where nothing can be traced."""
    trace = ["strace", "-f", "-qq", "-o", "/dev/null"]
    if not shutil.which("strace") or subprocess.run([*trace, "true"], capture_output=True, check=False).returncode:
        print("skipped: strace cannot trace here")
        return None
    return [*trace, *options]


def calls_fail(ground):
    failed = ["Copy/Move"]
    rows = [  # injected, the file concerned, answers, titles of the questions
        ("read:error=EIO:when=2", "from/f", "1", failed),
        ("read:error=EIO:when=1", "from/f", "2", failed),
        ("read:error=EINTR:when=1..3", "from/f", "", []),
        ("read:retval=0:when=2", "from/f", "", []),
        ("write:error=EIO:when=3", "to/f", "1", failed),
        ("write:error=EINTR:when=1..5", "to/f", "", []),
        ("write:error=ENOSPC:when=2", "to/f", "1", ["Write error"]),
        ("write:error=ENOSPC:when=2", "to/f", "2,1", ["Write error", "Copy/Move"]),
        ("write:error=EDQUOT:when=2", "to/f", "1", failed),
        ("close:error=EIO:when=1", "to/f", "1", failed),
        ("copy_file_range:error=EIO:when=1", "from/f", "", []),
        ("copy_file_range:error=EINTR:when=2", "from/f", "", []),
        ("copy_file_range:error=ENOSPC:when=3", "from/f", "", []),
        ("copy_file_range:retval=0:when=2", "from/f", "", []),
    ]
    for injected, concerned, answers, titles in rows:
        ground.clear()
        trace = tracer("-P", ground.path(concerned), "-e", "inject=" + injected)
        if not trace:
            return
        if "range" not in injected:  # every byte goes through the buffer
            trace += ["-e", "inject=copy_file_range:error=EXDEV"]
        ground.fill("from/f", 5000000 if "range" in injected else 120000)
        status, alerts, _ = ground.operate("copy", "f", options=["--answer", answers] if answers else [], before=trace)
        copied = titles in ([], ["Write error"])
        assert [title for title, _ in alerts] == titles, (injected, alerts)
        assert os.listdir(ground.path("to")) == (["f"] if copied else []), injected
        assert not copied or filecmp.cmp(ground.path("from/f"), ground.path("to/f"), shallow=False), injected
        assert status == (1 if answers == "2" else 0), (injected, status)


def a_move_keeps_its_sources_when_the_disk_fails_at_the_end(ground):
    files = ground.plant(20, 100000)
    trace = tracer("-e", "inject=syncfs:error=EIO")
    if trace:
        status, alerts, _ = ground.operate("move", "tree", to=ground.other, before=trace)
        assert status == 1 and [title for title, _ in alerts] == ["Write error"], (status, alerts)
        assert all(whole_at(ground.path("from"), *file) for file in files.items()), "sources are gone"


def the_owner_goes_with_the_copy_or_is_asked_about(ground):
    if os.getuid() != 0:
        return print("skipped: needs root")
    ground.shell("cd from; touch a; chown 12345:12345 a; chmod 6755 a")
    ground.operate("copy", "a")
    made = os.stat(ground.path("to/a"))
    assert (made.st_uid, made.st_gid, made.st_mode & 0o7777) == (12345, 12345, 0o6755), made
    trace = tracer("-e", "inject=fchownat,fchown,chown,lchown:error=EPERM")
    for answer, wanted in (("1", 0), ("2", 1)) if trace else ():
        ground.clear()
        ground.shell("cd from; touch a b; chown 12345:12345 a b; chmod 6755 a b")
        status, alerts, _ = ground.operate("copy", "a", "b", options=["--answer", answer], before=trace)
        assert status == wanted, (answer, status)
        assert alerts == [("Copy/Move", f"Unable to change owner permissions '{ground.path('to/a')}'\n")], alerts
        mode = os.stat(ground.path("to/a")).st_mode & 0o7777
        assert mode == 0o755, f"set-user-id was left on another's copy: {mode:o}"


def an_ordinary_user(ground):
    user = ["setpriv", "--reuid=65534", "--regid=65534", "--clear-groups", "--inh-caps=-all"]
    if os.getuid() != 0 or subprocess.run([*user, ground.op], capture_output=True, check=False).returncode != 2:
        return print("skipped: needs root, and a program that all may run")
    ground.shell("cd from; mkdir d locked; echo 1 >d/no; echo 2 >d/yes; echo 3 >locked/x; echo 4 >f; echo 5 >g;"
                 "chmod 600 d/no; chmod 700 locked; cd ../to; echo older content >f; chmod 666 f; chmod 777 .")
    no = [f"Unable to open '{ground.path('from', name)}'{kind}\nPermission denied\n"
          for name, kind in (("locked", " directory"), ("d/no", ""))]
    status, alerts, end = ground.operate("copy", "d", "locked", options=ALWAYS_ON, before=user)
    texts = [text for _, text in alerts if not text.startswith("Unable to change owner permissions")]
    assert status == 0 and not end["aborted"] and sorted(texts) == sorted(no), (status, end, alerts)
    assert len(alerts) == 3, f"the owner is asked about once: {alerts}"
    assert os.listdir(ground.path("to/d")) == ["yes"] and os.listdir(ground.path("to/locked")) == []
    assert os.stat(ground.path("to/locked")).st_mode & 0o777 == 0o700
    os.chmod(ground.path("to"), 0o755)
    for arguments, title, text in (
            (("copy", "g"), "Copy/Move", f"Error writing '{ground.path('to/g')}'"),
            (("delete", "f"), "Delete", f"Unable to delete '{ground.path('from/f')}'")):
        _, alerts, _ = ground.operate(*arguments, options=["--answer", "1"], before=user)
        assert alerts == [(title, text + "\nPermission denied\n")], alerts
    # A file that may be written where no second one can be made is overwritten in place.
    status, alerts, _ = ground.operate("copy", "f", options=["--answer", "2,1"], before=user)
    assert status == 0 and filecmp.cmp(ground.path("from/f"), ground.path("to/f"), shallow=False), (status, alerts)


def entries(root):
    return sum(len(names) for _, _, names in os.walk(root))


def sudden_death_of_a_move(ground):
    deaths, count = 0, 60
    while deaths < 16:
        ground.clear()
        files = ground.plant(count, 200000)
        if deaths % 2:  # into what an earlier, equal move left half done
            shutil.copytree(ground.path("from/tree"), os.path.join(ground.other, "tree"))
        move = ("move", "tree"), {"to": ground.other, "options": ["--flags", "1000"]}
        left = random.randrange(count)
        process = ground.start(*move[0], **move[1])
        if deaths % 4 < 2:  # while it copies, or while it removes what it copied
            wait_for(lambda: process.poll() is not None or entries(ground.other) > left)
        else:
            wait_for(lambda: process.poll() is not None or entries(ground.path("from")) <= left)
        process.kill()
        deaths += process.wait() == -signal.SIGKILL
        ground.nothing_is_lost(files)
        ground.start("move", "tree", to=ground.other, options=["--flags", "1000", "--answer", "2,2,2"]).wait()
        ground.nothing_is_lost(files)


def rivals_move_the_same(ground):
    for round_number in range(10):
        ground.clear()
        files = ground.plant(80, 100000)
        rivals = [ground.start("move", "tree", to=ground.other, options=["--flags", "1000", *ALWAYS_ON])
                  for _ in range(2)]
        if round_number % 2:
            wait_for(lambda: entries(ground.other) or rivals[0].poll() is not None)
            rivals[0].terminate()
        statuses = [rival.wait() for rival in rivals]
        assert set(statuses) <= {0, 1, -signal.SIGTERM if round_number % 2 else 0}, statuses
        ground.nothing_is_lost(files)


def a_tree_is_deleted_while_it_is_copied(ground):
    for _ in range(5):
        ground.clear()
        files = ground.plant(400, 20000)
        copying = ground.start("copy", "tree", options=ALWAYS_ON)
        wait_for(lambda: entries(ground.path("to")) or copying.poll() is not None)
        statuses = [ground.start("delete", "tree", options=ALWAYS_ON).wait(), copying.wait()]
        assert set(statuses) <= {0, 1}, statuses
        for name, content in files.items():
            assert whole_at(ground.path("to"), name, content) or not os.path.exists(ground.path("to/tree", name)), name


def a_signal_ends_it_cleanly(ground):
    ground.fill("from/big", 60000000)
    process = ground.start("copy", "big", options=["--pause-at", "20:60000"])
    wait_for(lambda: process.poll() is not None or entries(ground.path("to")) and
             os.stat(ground.path("to/big")).st_size >= 10000000, "a copy under way")
    process.terminate()
    assert process.wait() == 1, process.returncode
    assert os.listdir(ground.path("to")) == [], "a part is left"
    ground.fill("from/f", 9)
    ground.fill("to/f", 5)
    for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):  # while a question is open
        child, terminal = pty.fork()
        if child == 0:
            os.execv(ground.op, ground.command("copy", "f"))
        shown = b""
        while b"4 aBort" not in shown:
            shown += os.read(terminal, 4096)
        os.kill(child, number)
        status = os.waitstatus_to_exitcode(os.waitpid(child, 0)[1])
        assert status == 1, (number, status, shown)
        os.close(terminal)
        assert os.stat(ground.path("to/f")).st_size == 5, "an unanswered question overwrites nothing"


def wrong_usage_does_nothing(ground):
    ground.fill("from/f", 1)
    good = ground.command("copy", "f")[1:]
    for bad in ([], ["paint"], ["copy"], good[:4], [*good, "--answer", "x"], [*good, "--cancel-at", "101"],
                [*good, "--pause-at", "5"], [*good, "--flags", "zz"], [*good, "--settings", ground.path("none")],
                [*good, "--what"], ground.command("copy", "..")[1:], ground.command("delete", "a/b")[1:],
                [*ground.command("delete", "f")[1:], "--to", "x"]):
        done = subprocess.run([ground.op, *bad], capture_output=True, text=True, check=False)
        assert done.returncode == 2 and "usage:" in done.stderr and not done.stdout, (bad, done)
    assert os.listdir(ground.path("to")) == [] and os.listdir(ground.path("from")) == ["f"]
    status, _, end = ground.operate("copy", "f")
    assert (status, end) == (0, {"event": "end", "items": 1, "bytes": 1, "aborted": False}), (status, end)


sys.exit(run([calls_fail, a_move_keeps_its_sources_when_the_disk_fails_at_the_end,
              the_owner_goes_with_the_copy_or_is_asked_about, an_ordinary_user, sudden_death_of_a_move,
              rivals_move_the_same, a_tree_is_deleted_while_it_is_copied, a_signal_ends_it_cleanly,
              wrong_usage_does_nothing], Ground))
