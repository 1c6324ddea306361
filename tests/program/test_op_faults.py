#!/usr/bin/env python3
"""zan-op under faults: calls that fail, an ordinary user's rights, a disk that fails late, sudden death, rivals."""
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
import time

OP = os.path.abspath(os.path.join(sys.argv[1], "zan-op"))
ONLY = sys.argv[2:]
base = tempfile.mkdtemp(prefix="zan-faults-")
os.chmod(base, 0o755)
results = {"passed": 0, "skipped": 0}


class Skip(Exception):
    pass


def path(*parts):
    return os.path.join(base, *parts)


def shell(command):
    return subprocess.run(command, shell=True, cwd=base, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)


def fresh():
    shell("chmod -R u+rwX . ; rm -rf -- * .[!.]*")
    os.mkdir(path("from"))
    os.mkdir(path("to"))


def fill(name, size):
    with open(path(name), "wb") as out:
        out.write(random.randbytes(size))


def operate(arguments, before=()):
    """Runs zan-op and returns (exit status, alerts as (title, message), the end event)."""
    done = subprocess.run([*before, OP, *arguments, "--json"], cwd=base, stdin=subprocess.DEVNULL,
                          stdout=subprocess.PIPE, stderr=subprocess.PIPE)
    events = [json.loads(line) for line in done.stdout.splitlines()]
    assert events and events[-1]["event"] == "end", done
    return done.returncode, [(e["title"], e["message"]) for e in events if e["event"] == "alert"], events[-1]


def copy(name, *options, before=()):
    return operate(["copy", "--from", path("from"), name, "--to", path("to"), *options], before)


def other_system():
    """A directory on another file system, removed with everything at the end."""
    if not os.path.isdir("/dev/shm") or os.stat("/dev/shm").st_dev == os.stat(base).st_dev:
        raise Skip("no second file system at /dev/shm")
    return tempfile.TemporaryDirectory(prefix="zan-faults-", dir="/dev/shm")


def equal(a, b):
    return filecmp.cmp(a, b, shallow=False)


def test_failing_calls():
    if not shutil.which("strace") or shell("strace -f true").returncode != 0:
        raise Skip("strace cannot trace here")
    buffered = "copy_file_range:error=EXDEV"  # sends every byte through the buffer
    failed = ["Copy/Move"]
    cases = [  # injected, the file concerned, answers, titles of the questions
        ("read:error=EIO:when=2", "from/f", "1", failed),
        ("read:error=EIO:when=1", "from/f", "2", failed),
        ("read:error=EINTR:when=1..3", "from/f", None, []),
        ("read:retval=0:when=2", "from/f", None, []),
        ("write:error=EIO:when=3", "to/f", "1", failed),
        ("write:error=EINTR:when=1..5", "to/f", None, []),
        ("write:error=ENOSPC:when=2", "to/f", "1", ["Write error"]),
        ("write:error=ENOSPC:when=2", "to/f", "2,1", ["Write error", "Copy/Move"]),
        ("write:error=EDQUOT:when=2", "to/f", "1", failed),
        ("close:error=EIO:when=1", "to/f", "1", failed),
        ("copy_file_range:error=EIO:when=1", "from/f", None, []),
        ("copy_file_range:error=EINTR:when=2", "from/f", None, []),
        ("copy_file_range:error=ENOSPC:when=3", "from/f", None, []),
        ("copy_file_range:retval=0:when=2", "from/f", None, []),
    ]
    for injected, concerned, answers, titles in cases:
        fresh()
        fill("from/f", 5000000 if "range" in injected else 120000)
        trace = ["strace", "-f", "-qq", "-o", "/dev/null", "-P", path(concerned), "-e", "inject=" + injected]
        if "range" not in injected:
            trace += ["-e", "inject=" + buffered]
        status, alerts, _ = copy("f", *(["--answer", answers] if answers else []), before=trace)
        copied = not titles or titles == ["Write error"]
        assert [a[0] for a in alerts] == titles, (injected, alerts)
        assert os.listdir(path("to")) == (["f"] if copied else []), (injected, os.listdir(path("to")))
        assert not copied or equal(path("from/f"), path("to/f")), injected
        assert status == (1 if answers == "2" else 0), (injected, status)


def test_owner_not_settable():
    if not shutil.which("strace") or os.getuid() != 0 or shell("strace -f true").returncode != 0:
        raise Skip("needs root and strace")
    for answers, status in (("1", 0), ("2", 1)):
        fresh()
        for name in "ab":
            fill("from/" + name, 100)
            os.chown(path("from", name), 12345, 12345)
            os.chmod(path("from", name), 0o6755)
        trace = ["strace", "-f", "-qq", "-o", "/dev/null", "-e", "inject=fchownat,fchown,chown,lchown:error=EPERM"]
        code, alerts, _ = operate(["copy", "--from", path("from"), "a", "b", "--to", path("to"), "--answer", answers], trace)
        assert code == status
        assert alerts == [("Copy/Move", f"Unable to change owner permissions '{path('to/a')}'\n")], alerts
        assert os.stat(path("to/a")).st_mode & 0o7777 == 0o755, "set-user-id was left on another's copy"
    fresh()
    fill("from/a", 100)
    os.chown(path("from/a"), 12345, 12345)
    os.chmod(path("from/a"), 0o6755)
    copy("a")
    assert (os.stat(path("to/a")).st_uid, os.stat(path("to/a")).st_mode & 0o7777) == (12345, 0o6755)


def test_ordinary_user():
    user = ["setpriv", "--reuid=65534", "--regid=65534", "--clear-groups", "--inh-caps=-all"]
    if os.getuid() != 0 or subprocess.run([*user, OP], capture_output=True).returncode != 2:
        raise Skip("needs root and setpriv")
    fresh()
    shell("mkdir from/d from/locked from/ro && echo 1 >from/d/no && echo 2 >from/d/yes && echo 3 >from/locked/x && "
          "chmod 600 from/d/no && chmod 700 from/locked && chmod 777 to && echo 4 >from/ro/f && chmod 755 from from/ro")
    everything = ["copy", "--from", path("from"), "d", "locked", "--to", path("to"), "--answer", "1,1,1,1,1"]
    status, alerts, end = operate(everything, user)
    assert status == 0 and not end["aborted"]
    texts = [m for _, m in alerts]
    assert f"Unable to open '{path('from/locked')}' directory\nPermission denied\n" in texts, texts
    assert f"Unable to open '{path('from/d/no')}'\nPermission denied\n" in texts, texts
    owner = [t for t in texts if t.startswith("Unable to change owner permissions")]
    assert len(owner) == 1, texts
    assert sorted(os.listdir(path("to/d"))) == ["yes"] and os.listdir(path("to/locked")) == []
    assert os.stat(path("to/locked")).st_mode & 0o777 == 0o700
    # Into a directory that may not be written, and out of one.
    os.chmod(path("to"), 0o755)
    status, alerts, _ = operate(["copy", "--from", path("from/d"), "yes", "--to", path("to"), "--answer", "1"], user)
    assert alerts == [("Copy/Move", f"Error writing '{path('to/yes')}'\nPermission denied\n")], alerts
    status, alerts, _ = operate(["delete", "--from", path("from/ro"), "f", "--answer", "1"], user)
    assert alerts == [("Delete", f"Unable to delete '{path('from/ro/f')}'\nPermission denied\n")], alerts
    assert os.path.exists(path("from/ro/f"))
    # A file that may be written where no second one can be made is overwritten in place, and only then.
    shell("echo older content >to/f && chmod 666 to/f && echo new >from/f")
    status, alerts, _ = operate(["copy", "--from", path("from"), "f", "--to", path("to"), "--answer", "2,1"], user)
    assert status == 0 and equal(path("from/f"), path("to/f")), alerts


def test_a_disk_that_fails_late():
    if os.getuid() != 0:
        raise Skip("needs root for a loop mount")
    fresh()
    setup = shell("mkdir small mount && mount -t tmpfs -o size=24m none small && truncate -s 200M small/image && "
                  "mkfs.ext4 -q -O ^has_journal small/image && mount -o loop,errors=continue small/image mount")
    try:
        if setup.returncode != 0:
            raise Skip("cannot mount a loop image: " + setup.stdout.strip()[-80:])
        os.makedirs(path("from/d"))
        for i in range(20):
            fill(f"from/d/{i}", 2000000)
        status, alerts, end = operate(["move", "--from", path("from"), "d", "--to", path("mount")])
        assert status == 1 and alerts, (status, alerts)
        assert alerts[-1][0] == "Write error" and "source" in alerts[-1][1], alerts
        assert sorted(os.listdir(path("from/d")), key=int) == [str(i) for i in range(20)]
    finally:
        shell("umount -l mount; umount -l small")
    if not shutil.which("strace"):
        return
    with other_system() as other:
        trace = ["strace", "-f", "-qq", "-o", "/dev/null", "-e", "inject=syncfs:error=EIO"]
        status, alerts, _ = operate(["move", "--from", path("from"), "d", "--to", other], trace)
        assert status == 1 and [a[0] for a in alerts] == ["Write error"]
        assert len(os.listdir(path("from/d"))) == 20


def originals(count, size):
    return {f"d{i % 5}/f{i}": random.randbytes(random.randrange(size)) for i in range(count)}


def plant(files):
    for name, content in files.items():
        os.makedirs(path("from/tree", os.path.dirname(name)), exist_ok=True)
        with open(path("from/tree", name), "wb") as out:
            out.write(content)


def whole_at(root, name, content):
    try:
        with open(os.path.join(root, "tree", name), "rb") as file:
            return file.read() == content
    except OSError:
        return False


def test_sudden_death_of_a_move():
    deaths, whole_time = 0, 0.06
    for round_number in range(41):
        with other_system() as other:
            fresh()
            files = originals(60, 200000)
            plant(files)
            move = [OP, "move", "--from", path("from"), "tree", "--to", other, "--flags", "1000"]
            if round_number % 2:  # into what an earlier, equal move left half done
                shutil.copytree(path("from/tree"), os.path.join(other, "tree"))
            begun = time.monotonic()
            process = subprocess.Popen(move, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                                       stderr=subprocess.DEVNULL)
            if round_number == 0:  # the first may live: it tells how long the others have
                process.wait()
                whole_time = time.monotonic() - begun
            time.sleep(random.random() * whole_time * 0.8)
            process.kill()
            deaths += process.wait() == -signal.SIGKILL
            for name, content in files.items():
                assert whole_at(path("from"), name, content) or whole_at(other, name, content), name
            subprocess.run([*move, "--answer", "2,2,2"], stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                           stderr=subprocess.DEVNULL)
            for name, content in files.items():
                assert whole_at(path("from"), name, content) or whole_at(other, name, content), name
    assert deaths > 5, "the moves were over before they could be killed"


def test_rivals():
    for round_number in range(10):
        with other_system() as other:
            fresh()
            files = originals(80, 100000)
            plant(files)
            move = [OP, "move", "--from", path("from"), "tree", "--to", other, "--flags", "1000", "--answer",
                    ",".join(["1"] * 2000)]
            rivals = [subprocess.Popen(move, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                                       stderr=subprocess.DEVNULL) for _ in range(2)]
            if round_number % 2:
                time.sleep(random.random() * 0.05)
                rivals[0].terminate()
            for rival in rivals:
                assert rival.wait() in (0, 1)
            for name, content in files.items():
                assert whole_at(path("from"), name, content) or whole_at(other, name, content), name


def test_a_tree_deleted_while_it_is_copied():
    for _ in range(5):
        fresh()
        files = originals(400, 20000)
        plant(files)
        answers = ",".join(["1"] * 5000)
        copying = subprocess.Popen([OP, "copy", "--from", path("from"), "tree", "--to", path("to"), "--answer", answers],
                                   stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        time.sleep(random.random() * 0.02)
        deleting = subprocess.run([OP, "delete", "--from", path("from"), "tree", "--answer", answers],
                                  stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        assert copying.wait() in (0, 1) and deleting.returncode in (0, 1)
        for name, content in files.items():  # whatever was copied was copied whole
            assert whole_at(path("to"), name, content) or not os.path.exists(path("to/tree", name)), name


def test_a_signal_ends_cleanly():
    fresh()
    fill("from/big", 60000000)
    process = subprocess.Popen([OP, "copy", "--from", path("from"), "big", "--to", path("to"), "--pause-at", "20:60000"],
                               stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL)
    while not os.path.exists(path("to/big")) or os.stat(path("to/big")).st_size < 10000000:
        time.sleep(0.005)
    process.terminate()
    assert process.wait() == 1 and os.listdir(path("to")) == []


def test_a_signal_ends_an_open_question():
    for number in (signal.SIGINT, signal.SIGTERM):
        fresh()
        fill("from/f", 9)
        fill("to/f", 5)
        old = open(path("to/f"), "rb").read()
        child, terminal = pty.fork()
        if child == 0:
            os.execv(OP, [OP, "copy", "--from", path("from"), "f", "--to", path("to")])
        shown = b""
        while b"4 aBort" not in shown:
            shown += os.read(terminal, 4096)
        os.kill(child, number)
        assert os.waitstatus_to_exitcode(os.waitpid(child, 0)[1]) == 1, shown
        os.close(terminal)
        assert os.listdir(path("to")) == ["f"] and open(path("to/f"), "rb").read() == old


def test_no_memory_for_the_list():
    fresh()
    fill("from/f", 9)
    limited = lambda name, size: subprocess.run(
        ["prlimit", f"--as={size}", OP, "copy", "--from", path("from"), name, "--to", path("to"), "--json"],
        stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
    enough = next((size for size in range(4 << 20, 128 << 20, 1 << 18)
                   if shutil.which("prlimit") and limited("f", size).returncode == 0), None)
    if enough is None:
        raise Skip("no limit on the memory of a process here")
    os.mkdir(path("from/d"))
    for number in range(40000):
        os.close(os.open(path("from/d", f"{number:0200}"), os.O_CREAT | os.O_WRONLY))
    for more in range(0, 3 << 20, 1 << 18):
        done = limited("d", enough + more)
        assert done.returncode == 1, (more, done.returncode, done.stderr)
        last = [json.loads(line) for line in done.stdout.splitlines()][-3:]
        assert ("Memory Allocation", "Out of memory!") in [(e.get("title"), e.get("message")) for e in last], last
        assert last[-1]["event"] == "end" and last[-1]["aborted"]
    assert os.listdir(path("to")) == ["f"]


def test_usage():
    fresh()
    fill("from/f", 1)
    good = ["copy", "--from", path("from"), "f", "--to", path("to")]
    for bad in ([], ["paint"], ["copy"], good[:4], [*good, "--answer", "x"], [*good, "--cancel-at", "101"],
                [*good, "--pause-at", "5"], [*good, "--flags", "zz"], [*good, "--settings", path("none")],
                [*good, "--what"], ["copy", "--from", path("from"), "..", "--to", path("to")],
                ["delete", "--from", path("from"), "a/b"], ["delete", "--from", path("from"), "f", "--to", "x"]):
        done = subprocess.run([OP, *bad], capture_output=True, text=True)
        assert done.returncode == 2 and "usage:" in done.stderr and not done.stdout, bad
    assert os.listdir(path("to")) == [] and os.path.exists(path("from/f"))
    status, _, end = operate(good)
    assert (status, end) == (0, {"event": "end", "items": 1, "bytes": 1, "aborted": False})


def main():
    try:
        for name, test in sorted(globals().items()):
            if not name.startswith("test_") or (ONLY and name not in ONLY):
                continue
            try:
                test()
                results["passed"] += 1
            except Skip as reason:
                results["skipped"] += 1
                print(f"skipped {name}: {reason}")
    finally:
        shutil.rmtree(base, ignore_errors=True)
    print(results)
    return 0 if results["passed"] else 77


sys.exit(main())
