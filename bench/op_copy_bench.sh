#!/bin/sh
# Whole operations of zan-op against the plain tools, interleaved, as ratios of the medians within one run. On a
# busy machine the ratio of processor time is the one to read.
# Usage: op_copy_bench.sh ZAN_OP [ROUNDS] [DIRECTORY...]   (default: 7 rounds, /dev/shm and the temporary directory)
exec python3 - "$@" <<'PYTHON'
import os, resource, shutil, statistics, subprocess, sys, tempfile, time

op = os.path.abspath(sys.argv[1])
rounds = int(sys.argv[2]) if len(sys.argv) > 2 else 7
places = sys.argv[3:] or ["/dev/shm", tempfile.gettempdir()]
DELETE, UNASKED = "delete 20,000 files / rm -rf", "... unasked / rm -rf"  # first: asks of write-protected ones
BOUNDS = {"20,000 small files / cp -a": 1.15, "2 GiB file / cp": 1.15, DELETE: 1.2, UNASKED: 1.2}


def timed(arguments):
    """Elapsed and processor seconds."""
    before, start = resource.getrusage(resource.RUSAGE_CHILDREN), time.perf_counter()
    subprocess.run(arguments, check=True, stdout=subprocess.DEVNULL)
    elapsed, after = time.perf_counter() - start, resource.getrusage(resource.RUSAGE_CHILDREN)
    return elapsed, after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime


def tree(path):
    for d in range(1000):
        folder = os.path.join(path, "dir%04d" % d)
        os.makedirs(folder)
        for f in range(20):
            with open(os.path.join(folder, "file%02d" % f), "wb") as out:
                out.write(b"x" * (100 + 397 * f))


def compare(ours, plain, prepare=lambda: None, after=lambda: None):
    """ours: commands by their names in the table."""
    commands, times = [*ours.items(), ("plain", plain)], {}
    for r in range(rounds):
        first = r % len(commands)
        for who, arguments in commands[first:] + commands[:first]:
            prepare()
            times.setdefault(who, []).append(timed(arguments))
            after()
    wall, cpu = ({who: statistics.median(t[i] for t in all_times) for who, all_times in times.items()} for i in (0, 1))
    for name in ours:
        print(f"  {name:30} {wall[name] / wall['plain']:5.2f} elapsed "
              f"({wall[name] * 1000:.0f} to {wall['plain'] * 1000:.0f} ms), {cpu[name] / cpu['plain']:5.2f} processor "
              f"({cpu[name] * 1000:.0f} to {cpu['plain'] * 1000:.0f} ms)   bound {BOUNDS[name]}", flush=True)


def run(place):
    base = tempfile.mkdtemp(prefix="zan-bench-", dir=place)
    print(f"{place}: ratio of zan-op to the plain tool, medians of {rounds}, load {os.getloadavg()[0]:.1f}")
    path = lambda name: os.path.join(base, name)
    try:
        os.mkdir(path("from"))
        tree(path("from/tree"))
        os.mkdir(path("to"))
        clear = lambda: (shutil.rmtree(path("to")), os.mkdir(path("to")))
        copy = [op, "copy", "--from", path("from"), "tree", "--to", path("to")]
        compare({"20,000 small files / cp -a": copy}, ["cp", "-a", path("from/tree"), path("to")], after=clear)
        fill = lambda: subprocess.run(["cp", "-a", path("from/tree"), path("to")], check=True)
        delete = [op, "delete", "--from", path("to"), "tree"]
        compare({DELETE: delete, UNASKED: [*delete, "--flags", "200"]}, ["rm", "-rf", path("to/tree")], prepare=fill)
        with open(path("from/big"), "wb") as out:
            block = os.urandom(1 << 20)
            for _ in range(2048):
                out.write(block)
        big = [op, "copy", "--from", path("from"), "big", "--to", path("to")]
        compare({"2 GiB file / cp": big}, ["cp", path("from/big"), path("to")], after=clear)
    finally:
        shutil.rmtree(base)


for place in places:
    run(place)
PYTHON
