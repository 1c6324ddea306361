#!/usr/bin/env python3
"""zan-op under faults; each test stands in a directory with zan-op, from/, to/, and other/ on another file system."""
import contextlib
import filecmp
import json
import os
import pty
import random
import shutil
import signal
import subprocess
import tempfile

from harness import Place, listing, run, wait_for, write

ALWAYS_ON = ["--flags", "1000", "--answer", ",".join(["1"] * 5000)]
TRACE = ["strace", "-f", "-qq", "-o", "/dev/null"]  # the beginning of a command whose system calls fail as told
USER = ["setpriv", "--reuid=65534", "--regid=65534", "--clear-groups", "--inh-caps=-all"]


class Ground(Place):
    def prepare(self):
        self.other = tempfile.TemporaryDirectory(prefix="zan-faults-", dir="/dev/shm")  # goes with this object
        os.chmod(self.root, 0o755)
        os.chdir(self.root)
        os.symlink(self.other.name, "other")
        shutil.copy(os.path.join(self.bin, "zan-op"), "zan-op")
        clear()


def shell(script):
    subprocess.run(script, shell=True, check=True)


def clear():
    shell("rm -rf from to other/* && mkdir from to")


def fill(name, size):
    """Makes a random file; what it holds."""
    content = random.randbytes(size)
    write(name, content)
    return content


def plant(count, size):
    """Makes from/tree of random files; what they hold, by name."""
    return {f"d{i % 5}/f{i}": fill(f"from/tree/d{i % 5}/f{i}", random.randrange(size)) for i in range(count)}


def entries(root):
    return sum(len(names) for _, _, names in os.walk(root + "/"))


def whole_at(root, name, content):
    with contextlib.suppress(OSError), open(os.path.join(root, "tree", name), "rb") as file:
        return file.read() == content
    return False


def nothing_is_lost(files):
    for name, content in files.items():
        assert whole_at("from", name, content) or whole_at("other", name, content), f"lost: {name}"


def command(kind, *names, to="to", options=()):
    return ["./zan-op", kind, "--from", "from", *names, *([] if kind == "delete" else ["--to", to]), *options]


def start(*arguments, **options):
    return subprocess.Popen(command(*arguments, **options), stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                            stderr=subprocess.DEVNULL)


def operate(*arguments, before=(), **options):
    """Runs it and returns (exit status, alerts as (title, message with paths from here), the end event)."""
    done = subprocess.run([*before, *command(*arguments, **options), "--json"], stdin=subprocess.DEVNULL,
                          capture_output=True, check=False)
    events = [json.loads(line) for line in done.stdout.splitlines()]
    assert events and events[-1]["event"] == "end", done
    alerts = [(e["title"], e["message"].replace(os.getcwd() + "/", "")) for e in events if e["event"] == "alert"]
    return done.returncode, alerts, events[-1]


def calls_fail(_):
    rows = [  # injected, the file concerned, the answer to the question that comes
        ("read:error=EIO:when=2", "from/f", "1"),
        ("read:error=EIO:when=1", "from/f", "2"),
        ("read:error=EINTR:when=1..3", "from/f", ""),
        ("read:retval=0:when=2", "from/f", ""),
        ("read:retval=0:when=2+", "from/f", "1"),  # it ends before its size
        ("write:error=EIO:when=3", "to/f", "1"),
        ("write:error=EINTR:when=1..5", "to/f", ""),
        ("write:error=EDQUOT:when=2", "to/f", "1"),
        ("close:error=EIO:when=1", "to/f", "1"),
        ("copy_file_range:error=EIO:when=1", "from/f", ""),
        ("copy_file_range:error=EINTR:when=2", "from/f", ""),
        ("copy_file_range:error=ENOSPC:when=3", "from/f", ""),
        ("copy_file_range:retval=0:when=2", "from/f", ""),
    ]
    for injected, concerned, answer in rows:
        clear()
        trace = [*TRACE, "-P", os.path.abspath(concerned), "-e", "inject=" + injected]
        if "range" not in injected:  # every byte goes through the buffer
            trace += ["-e", "inject=copy_file_range:error=EXDEV"]
        fill("from/f", 5000000 if "range" in injected else 120000)
        status, alerts, _ = operate("copy", "f", options=["--answer", answer] if answer else [], before=trace)
        found = status, [title for title, _ in alerts], listing("to")
        assert found == (answer == "2", ["Copy/Move"] if answer else [], [] if answer else ["f"]), (injected, found)
        assert answer or filecmp.cmp("from/f", "to/f", shallow=False), injected


def a_move_keeps_its_sources_when_the_disk_fails_at_the_end(_):
    files = plant(20, 100000)
    status, alerts, _ = operate("move", "tree", to="other", before=[*TRACE, "-e", "inject=syncfs:error=EIO"])
    assert status == 1 and [title for title, _ in alerts] == ["Write error"], (status, alerts)
    assert all(whole_at("from", *file) for file in files.items()), "sources are gone"


def the_owner_goes_with_the_copy_or_is_asked_about(_):
    trace = [*TRACE, "-e", "inject=fchownat,fchown,chown,lchown:error=EPERM"]
    question, mine = [("Copy/Move", "Unable to change owner permissions 'to/a'\n")], (os.getuid(), os.getgid(), 0o755)
    for before, answer, wanted in (([], "1", (0, [], (12345, 12345, 0o6755))), (trace, "1", (0, question, mine)),
                                   (trace, "2", (1, question, mine))):  # set-user-id never stays on another's copy
        clear()
        shell("cd from; touch a b; chown 12345:12345 a b; chmod 6755 a b")
        status, alerts, _ = operate("copy", "a", "b", options=["--answer", answer], before=before)
        made = os.stat("to/a")
        found = status, alerts, (made.st_uid, made.st_gid, made.st_mode & 0o7777)
        assert found == wanted, (answer, found)


def an_ordinary_user(_):
    shell("cd from; mkdir d locked; echo 1 >d/no; echo 2 >d/yes; echo 3 >locked/x; echo 4 >f; echo 5 >g;"
          "chmod 600 d/no; chmod 700 locked; cd ../to; echo older content >f; chmod 666 f; chmod 777 .")
    no = [f"Unable to open 'from/{name}\nPermission denied\n" for name in ("d/no'", "locked' directory")]
    status, alerts, end = operate("copy", "d", "locked", options=ALWAYS_ON, before=USER)
    texts = [text for _, text in alerts if not text.startswith("Unable to change owner permissions")]
    assert status == 0 and not end["aborted"] and sorted(texts) == no, (status, end, alerts)
    assert len(alerts) == 3, f"the owner is asked about once: {alerts}"
    assert listing("to/d") == ["yes"] and listing("to/locked") == []
    assert os.stat("to/locked").st_mode & 0o777 == 0o700
    os.chmod("to", 0o755)
    for arguments, alert in ((("copy", "g"), ("Copy/Move", "Error writing 'to/g'\nPermission denied\n")),
                             (("delete", "f"), ("Delete", "Unable to delete 'from/f'\nPermission denied\n"))):
        _, alerts, _ = operate(*arguments, options=["--answer", "1"], before=USER)
        assert alerts == [alert], alerts
    # A file that may be written where no second one can be made is overwritten in place.
    status, alerts, _ = operate("copy", "f", options=["--answer", "2,1"], before=USER)
    assert status == 0 and filecmp.cmp("from/f", "to/f", shallow=False), (status, alerts)


def sudden_death_of_a_move(_):
    deaths, count = 0, 60
    while deaths < 16:
        clear()
        files, moment = plant(count, 200000), random.randrange(count)
        if deaths % 2:  # into what an earlier, equal move left half done
            shutil.copytree("from/tree", "other/tree")
        process = start("move", "tree", to="other", options=["--flags", "1000"])
        # While it copies, or while it removes what it copied.
        reached = (lambda: entries("other") > moment) if deaths % 4 < 2 else (lambda: entries("from") <= moment)
        wait_for(lambda: process.poll() is not None or reached())
        process.kill()
        deaths += process.wait() == -signal.SIGKILL
        nothing_is_lost(files)
        start("move", "tree", to="other", options=["--flags", "1000", "--answer", "2,2,2"]).wait()
        nothing_is_lost(files)


def rivals_at_the_same(_):
    """Two moves of one tree; the same with the first ended on the way; a tree deleted while it is copied."""
    for kind, rival, ended in [("move", "move", False), ("move", "move", True), ("copy", "delete", False)] * 5:
        clear()
        files = plant(150, 60000)
        first = start(kind, "tree", to="other", options=ALWAYS_ON)
        if rival == "delete":
            wait_for(lambda: entries("other") or first.poll() is not None)
        second = start(rival, "tree", to="other", options=ALWAYS_ON)
        if ended:
            wait_for(lambda: entries("other") or first.poll() is not None)
            first.terminate()
        statuses = {first.wait(), second.wait()}
        assert statuses <= {0, 1, -signal.SIGTERM if ended else 0}, statuses
        if rival == "move":
            nothing_is_lost(files)
        for name, content in files.items():
            assert whole_at("other", name, content) or not os.path.exists("other/tree/" + name), f"in part: {name}"


def a_signal_ends_it_cleanly(_):
    fill("from/big", 60000000)
    process = start("copy", "big", options=["--pause-at", "20:60000"])
    wait_for(lambda: process.poll() is not None or entries("to") and os.stat("to/big").st_size >= 10000000,
             "a copy under way")
    process.terminate()
    assert process.wait() == 1, process.returncode
    assert listing("to") == [], "a part is left"
    fill("from/f", 9)
    status, _, end = operate("copy", "f")
    assert (status, end) == (0, {"event": "end", "items": 1, "bytes": 9, "aborted": False}), (status, end)
    fill("to/f", 5)
    for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):  # while a question is open
        child, terminal = pty.fork()
        if child == 0:
            os.execv("./zan-op", command("copy", "f"))
        shown = b""
        while b"4 aBort" not in shown:
            shown += os.read(terminal, 4096)
        os.kill(child, number)
        status = os.waitstatus_to_exitcode(os.waitpid(child, 0)[1])
        assert status == 1, (number, status, shown)
        os.close(terminal)
        assert os.stat("to/f").st_size == 5, "an unanswered question overwrites nothing"


tests = [sudden_death_of_a_move, rivals_at_the_same, a_signal_ends_it_cleanly]
if shutil.which("strace") and subprocess.run([*TRACE, "true"], check=False).returncode == 0:
    tests += [calls_fail, a_move_keeps_its_sources_when_the_disk_fails_at_the_end]
    tests += [the_owner_goes_with_the_copy_or_is_asked_about] if os.getuid() == 0 else []
run(tests + ([an_ordinary_user] if os.getuid() == 0 else []), Ground)
