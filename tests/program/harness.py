"""Runs the real program in a real window on a display of its own, and looks at what it does.

A script is a table of tests, `run([...])`; its argument is the build's bin directory. Each test gets a
Desktop, starts programs there, and fails by an assertion. Nothing that it started outlives it: the script is made the
parent of every orphan below it, and what is left at the end is killed by its process id.
"""
import contextlib
import ctypes
import os
import pathlib
import shutil
import signal
import subprocess
import sys
import tempfile
import time
import traceback

PR_SET_CHILD_SUBREAPER = 36
PATIENCE = 60.0  # seconds until a condition that never comes true is called a failure


def skip(why):
    print("skipped: " + why)
    sys.exit(77)  # what ctest takes for that


def wait_for(condition, what="condition"):
    """Waits until condition() is true and returns its value. What is awaited may be told by a function."""
    end = time.monotonic() + PATIENCE
    while True:
        value = condition()
        if value:
            return value
        if time.monotonic() > end:
            raise AssertionError("never happened: " + (what() if callable(what) else what))
        time.sleep(0.02)


def becomes(look, wanted, what):
    """Waits until look() gives what is wanted."""
    wait_for(lambda: look() == wanted, lambda: f"{what} is {look()} and not {wanted}")


def read(path):
    return pathlib.Path(path).read_text(encoding="utf-8", errors="replace")


def write(path, content):
    """Writes a file, text or bytes, and makes its directory where that is missing."""
    os.makedirs(os.path.dirname(path), exist_ok=True)
    pathlib.Path(path).write_bytes(content if isinstance(content, bytes) else content.encode())
    return path


def listing(path):
    return sorted(os.listdir(path))


def said(*command, check=True, stderr=subprocess.PIPE, **options):
    """What that program prints; fails with it."""
    done = subprocess.run(command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=stderr, text=True,
                          errors="replace", check=False, **options)
    assert not check or done.returncode == 0, f"{command}: {done.stdout}{done.stderr}"
    return done.stdout


def stat_of(pid):
    """What the system tells of a process behind its name: the state, the parent, ..."""
    return read(f"/proc/{pid}/stat").rpartition(")")[2].split()


def descendants(root):
    """Process ids of everything below root, parents first."""
    parents = {}
    for name in filter(str.isdigit, os.listdir("/proc")):
        with contextlib.suppress(OSError):  # it may have ended meanwhile
            parents[int(name)] = int(stat_of(name)[1])
    found = [root]
    for pid in found:
        found += [child for child, parent in parents.items() if parent == pid]
    return found[1:]


def kill_all_but(*spared):
    """Kills everything below this process, until nothing is left but those."""
    while pids := [pid for pid in descendants(os.getpid()) if pid not in spared]:
        for pid in pids:
            with contextlib.suppress(ProcessLookupError, ChildProcessError):
                os.kill(pid, signal.SIGKILL)
                os.waitpid(pid, os.WNOHANG)
        time.sleep(0.01)


class App:
    """One running program with (at least) one window."""

    def __init__(self, desk, process, output):
        self.desk, self.process, self.pid = desk, process, process.pid
        self._output, self._window = output, None

    def printed(self):
        return read(self._output)

    def windows(self):
        """Ids of the program's windows, those that are hidden as icons included."""
        return [window for window, pid, _ in self.desk.windows() if pid == self.pid]

    def window(self):
        """The first window that the program showed. Waits for it."""
        def shown():
            assert self.process.poll() is None, f"ended before it had a window: {self.printed()}"
            return self.windows()
        self._window = self._window or wait_for(shown, "a window")[0]
        return self._window

    def other_window(self, title):
        """Waits for another window of the program whose title holds that text."""
        def find():
            return [w for w in self.windows() if w != self._window and title in self.title(w)]
        return wait_for(find, f"a window titled {title!r}")[0]

    def title(self, window=None):
        return {listed: title for listed, _, title in self.desk.windows()}.get(window or self.window(), "")

    def shows(self, path):
        """Waits until the main window shows that directory."""
        becomes(self.title, "ZAN: " + path, "the title")

    def geometry(self):
        """x, y, width, height of the main window's content."""
        told = self.desk.xdotool("getwindowgeometry", "--shell", self.window())
        return tuple(int(line.partition("=")[2]) for line in told.split()[1:5])

    def keys(self, *names, window=None):
        """Presses keys: "ctrl+a", "Return", "Escape"."""
        self.desk.xdotool("windowactivate", "--sync", window or self.window())
        self.desk.xdotool("key", "--clearmodifiers", "--delay", "30", *names)

    def type(self, text, window=None):
        self.desk.xdotool("windowactivate", "--sync", window or self.window())
        self.desk.xdotool("type", "--delay", "20", "--", text)

    def go(self, path):
        """Types a path into the path field."""
        self.keys("alt+p", "ctrl+a")
        self.type(path)
        self.keys("Return")

    def click(self, x, y):
        """Clicks at a place of the main window's content."""
        self.desk.xdotool("mousemove", "--window", self.window(), str(x), str(y), "click", "1")

    def close(self, window=None):
        """Closes the window as its close button does."""
        self.desk.said("wmctrl", "-i", "-c", window or self.window())

    def ends(self, *wanted):
        """Waits for the end of the program, whose status must be that (0; negative: ended by that signal)."""
        status = self.process.wait(PATIENCE)
        assert status in (wanted or (0,)), (status, self.printed()[-2000:])

    def end(self):
        """Closes the main window: the program must end well."""
        self.close()
        self.ends()


class Place:
    """A directory of its own for a test; what the test starts ends with it."""

    def __init__(self, bin_dir):
        self.bin = os.path.abspath(bin_dir)

    def __enter__(self):
        ctypes.CDLL(None).prctl(PR_SET_CHILD_SUBREAPER, 1, 0, 0, 0)
        self.root = tempfile.mkdtemp(prefix="zan-program-")
        try:
            self.prepare()
        except BaseException:
            self.__exit__(None, None, None)
            raise
        return self

    def prepare(self):
        """What else the place has."""

    def __exit__(self, kind, error, trace):
        kill_all_but()
        subprocess.run(["chmod", "-R", "u+rwx", self.root], stderr=subprocess.DEVNULL, check=False)
        shutil.rmtree(self.root, ignore_errors=True)


class Desktop(Place):
    """A display server, a window manager, a HOME and a scratch directory."""

    server_options = []  # more arguments of the display server

    def prepare(self):
        self.apps, self.server = [], None
        for tool in ("Xvfb", "xdotool", "wmctrl", "openbox"):
            if not shutil.which(tool):
                skip("no " + tool)
        self.zan = os.path.join(self.bin, "zan")
        self.home = os.path.join(self.root, "home")
        self.work = os.path.join(self.root, "work")
        self.settings = os.path.join(self.home, ".vr", "zan")
        self.record = os.path.join(self.settings, "config.003")
        os.makedirs(os.path.dirname(self.settings))
        os.makedirs(self.work)
        read_end, write_end = os.pipe()
        self.server = subprocess.Popen(["Xvfb", "-displayfd", str(write_end), "-screen", "0", "1280x800x24", "-noreset",
                                        *self.server_options], pass_fds=[write_end], stderr=subprocess.DEVNULL)
        os.close(write_end)
        with os.fdopen(read_end) as pipe:
            self.display = ":" + pipe.readline().strip()
        assert self.display != ":", "the display server did not start"
        self.env = {name: value for name, value in os.environ.items()
                    if not name.startswith(("QT_", "XDG_", "WAYLAND", "DBUS_", "GTK_"))}
        self.env.update(DISPLAY=self.display, HOME=self.home, LC_ALL="C.UTF-8", QT_QPA_PLATFORM="xcb",
                        XDG_RUNTIME_DIR=self.root, NO_AT_BRIDGE="1")
        # A configuration that is nobody's, and not a file that openbox complains of.
        config = write(os.path.join(self.root, "openbox.xml"),
                       '<openbox_config xmlns="http://openbox.org/3.4/rc"><menu/></openbox_config>')
        ready = os.path.join(self.root, "ready")  # a window that is shown while openbox starts may never be managed
        self.helper("openbox", "--config-file", config, "--startup", "touch " + ready)
        wait_for(lambda: os.path.exists(ready), "a window manager")

    def __exit__(self, kind, error, trace):
        if error is not None:
            for app in self.apps:
                print(f"pid {app.pid}: status {app.process.poll()}, said {app.printed()!r}")
        if self.server:
            kill_all_but(self.server.pid)
            self.server.terminate()  # told to end, it takes its lock file and its socket with it
            self.server.wait()
        super().__exit__(kind, error, trace)

    def start(self, *arguments, program=None, env=None, cwd=None, wait=True):
        """Starts zan (or another program). With wait, its first window is there on return."""
        environment = {name: value for name, value in {**self.env, **(env or {})}.items() if value is not None}
        output = os.path.join(self.root, f"output-{len(self.apps)}")
        with open(output, "wb") as out:
            process = subprocess.Popen([program or self.zan, *arguments], env=environment, cwd=cwd or self.work,
                                       stdin=subprocess.DEVNULL, stdout=out, stderr=out)
        app = App(self, process, output)
        self.apps.append(app)
        if wait:
            app.window()
        return app

    def open(self, path):
        """Starts zan and waits until it shows that directory."""
        app = self.start(path)
        app.shows(path)
        return app

    def helper(self, *command):
        """Starts a program that serves the desktop, and returns its process; what it prints can be read."""
        return subprocess.Popen(command, env=self.env, cwd=self.root, stdin=subprocess.DEVNULL,
                                stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)

    def start_bus(self):
        """A session bus of the test's own, for what is started from now on."""
        bus = self.helper("dbus-daemon", "--session", "--nofork", "--print-address")
        self.env["DBUS_SESSION_BUS_ADDRESS"] = bus.stdout.readline().strip()

    def said(self, *command, check=True):
        return said(*command, check=check, env=self.env)

    def xdotool(self, *arguments):
        return self.said("xdotool", *arguments)

    def clip(self, kind):
        """What the clipboard holds in that form; empty when it has none."""
        return self.said("xclip", "-o", "-selection", "clipboard", "-t", kind, check=False)

    def windows(self):
        """(id, process id, title) of each window that the window manager knows."""
        lines = [line.split(None, 4) for line in self.said("wmctrl", "-l", "-p", check=False).splitlines()]
        return [(words[0], int(words[2]), "".join(words[4:])) for words in lines if len(words) > 3]

    def titles(self):
        return sorted(title for _, _, title in self.windows())

    def make(self, name, content=""):
        """Makes a file below the scratch directory (a directory when the name ends in "/")."""
        path = os.path.join(self.work, name)
        if not name.endswith("/"):
            return write(path, content)
        os.makedirs(path, exist_ok=True)
        return path.rstrip("/")


def run(tests, place=Desktop):
    """Runs each function of the table in a place of its own, prints what fails, and ends the script."""
    failed = 0
    for test in tests:
        begun = time.monotonic()
        try:
            with place(sys.argv[1]) as here:
                test(here)
            print(f"ok   {test.__name__} ({time.monotonic() - begun:.1f} s)", flush=True)
        except (AssertionError, OSError, subprocess.SubprocessError) as error:
            failed = 1
            line = traceback.extract_tb(error.__traceback__)[-1].lineno
            print(f"FAIL {test.__name__}, line {line}: {error}", flush=True)
    sys.exit(failed)
