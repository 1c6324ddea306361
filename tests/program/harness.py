"""Runs the real program in a real window on a display of its own, and looks at what it does.

    with Desktop(sys.argv[1]) as desk:          # the build's bin directory
        app = desk.start("/some/directory")     # a zan with desk.home as HOME
        app.keys("ctrl+a"); app.type("readme")
        wait_for(lambda: app.title().startswith("ZAN: /tmp"), "the directory")
        app.end()

Nothing that was started outlives the `with`: the script is made the parent of every orphan below it, and
what is left at the end is killed by its process id. Without a display server the script ends with 77.
"""
import ctypes
import os
import shutil
import signal
import subprocess
import sys
import tempfile
import time

SKIP = 77
PR_SET_CHILD_SUBREAPER = 36
PATIENCE = 60.0  # seconds until a condition that never comes true is called a failure


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


def descendants(root):
    """Process ids of everything below root, parents first."""
    parents = {}
    for name in filter(str.isdigit, os.listdir("/proc")):
        try:
            with open(f"/proc/{name}/stat", encoding="utf-8", errors="replace") as stat:
                parents[int(name)] = int(stat.read().rpartition(")")[2].split()[1])
        except OSError:
            pass  # it has ended meanwhile
    found = [root]
    for pid in found:
        found += [child for child, parent in parents.items() if parent == pid]
    return found[1:]


class App:
    """One running program with (at least) one window."""

    def __init__(self, desk, process, stdout, stderr):
        self.desk, self.process, self.pid = desk, process, process.pid
        self._stdout, self._stderr = stdout, stderr
        self._window = None

    def running(self):
        return self.process.poll() is None

    def windows(self):
        """Ids of the program's windows, those that are hidden as icons included."""
        return [window for window, pid, _ in self.desk.windows() if pid == self.pid]

    def window(self):
        """The first window that the program showed. Waits for it."""
        def shown():
            assert self.running(), f"ended with {self.process.returncode} before it had a window: {self.errors()}"
            return self.windows()
        self._window = self._window or wait_for(shown, "a window")[0]
        return self._window

    def other_window(self, title):
        """Waits for another window of the program whose title holds that text."""
        def find():
            return [w for w in self.windows() if w != self._window and title in self.title(w)]
        return wait_for(find, f"a window titled {title!r}")[0]

    def title(self, window=None):
        window = window or self.window()
        return next((title for listed, _, title in self.desk.windows() if listed == window), "")

    def shows(self, path):
        """Waits until the main window shows that directory."""
        wait_for(lambda: self.title() == "ZAN: " + path, lambda: f"a window on {path}, not {self.title()}")

    def geometry(self):
        """x, y, width, height of the main window's content."""
        text = self.desk.xdotool("getwindowgeometry", "--shell", self.window())
        values = dict(line.split("=") for line in text.split())
        return tuple(int(values[name]) for name in ("X", "Y", "WIDTH", "HEIGHT"))

    def focus(self, window=None):
        self.desk.xdotool("windowactivate", "--sync", window or self.window())

    def keys(self, *names, window=None):
        """Presses keys: "ctrl+a", "Return", "Escape"."""
        self.focus(window)
        self.desk.xdotool("key", "--clearmodifiers", "--delay", "30", *names)

    def type(self, text, window=None):
        self.focus(window)
        self.desk.xdotool("type", "--delay", "20", "--", text)

    def click(self, x, y, window=None):
        """Clicks at a place relative to the window's content."""
        self.desk.xdotool("mousemove", "--window", window or self.window(), str(x), str(y), "click", "1")

    def signal(self, number):
        os.kill(self.pid, number)

    def close(self, window=None):
        """Closes the window as its close button does."""
        self.desk.said("wmctrl", "-i", "-c", window or self.window())

    def wait(self):
        """The exit status (negative: ended by that signal)."""
        try:
            return self.process.wait(PATIENCE)
        except subprocess.TimeoutExpired:
            raise AssertionError("the program does not end") from None

    def end(self):
        """Closes the main window: the program must end well."""
        self.close()
        status = self.wait()
        assert status == 0, (status, self.errors())

    def output(self):
        return read(self._stdout)

    def errors(self):
        return read(self._stderr)


def read(path):
    with open(path, encoding="utf-8", errors="replace") as file:
        return file.read()


class Desktop:
    """A display server, a window manager, a HOME and a scratch directory."""

    def __init__(self, bin_dir):
        self.bin = os.path.abspath(bin_dir)
        self.zan = os.path.join(self.bin, "zan")
        self.apps, self.server = [], None

    def __enter__(self):
        for tool in ("Xvfb", "xdotool", "wmctrl", "openbox"):
            if not shutil.which(tool):
                print("skipped: no " + tool)
                sys.exit(SKIP)
        ctypes.CDLL(None).prctl(PR_SET_CHILD_SUBREAPER, 1, 0, 0, 0)
        self.root = tempfile.mkdtemp(prefix="zan-program-")
        self.home = os.path.join(self.root, "home")
        self.work = os.path.join(self.root, "work")
        self.settings = os.path.join(self.home, ".vr", "zan")
        self.record = os.path.join(self.settings, "config.003")
        os.makedirs(os.path.dirname(self.settings))
        os.makedirs(self.work)
        try:
            self._start_display()
        except BaseException:
            self.__exit__(None, None, None)
            raise
        return self

    def _start_display(self):
        read_end, write_end = os.pipe()
        self.server = subprocess.Popen(["Xvfb", "-displayfd", str(write_end), "-screen", "0", "1280x800x24", "-noreset",
                                        "-nolisten", "tcp"], pass_fds=[write_end], stderr=subprocess.DEVNULL)
        os.close(write_end)
        with os.fdopen(read_end) as pipe:
            self.display = ":" + pipe.readline().strip()
        assert self.display != ":", "the display server did not start"
        self.env = {name: value for name, value in os.environ.items()
                    if not name.startswith(("QT_", "XDG_", "WAYLAND", "DBUS_", "GTK_"))}
        self.env.update(DISPLAY=self.display, HOME=self.home, LC_ALL="C.UTF-8", QT_QPA_PLATFORM="xcb",
                        XDG_RUNTIME_DIR=self.root, NO_AT_BRIDGE="1")
        config = os.path.join(self.root, "openbox.xml")  # nobody's, and not a file that openbox complains of
        with open(config, "w", encoding="utf-8") as file:
            file.write('<openbox_config xmlns="http://openbox.org/3.4/rc"><menu/></openbox_config>')
        ready = os.path.join(self.root, "ready")  # a window that is shown while openbox starts may never be managed
        self.helper("openbox", "--config-file", config, "--startup", "touch " + ready)
        wait_for(lambda: os.path.exists(ready), "a window manager")

    def __exit__(self, kind, error, trace):
        if error is not None:
            for app in self.apps:
                print(f"pid {app.pid}: status {app.process.poll()}, said {app.output()!r} {app.errors()!r}")
            if os.environ.get("ZAN_TEST_SCREENSHOT"):
                self.said("import", "-window", "root", os.environ["ZAN_TEST_SCREENSHOT"], check=False)
        if self.server:
            self._kill(pid for pid in descendants(os.getpid()) if pid != self.server.pid)
            self.server.terminate()  # told to end, it takes its lock file and its socket with it
            self.server.wait()
        while descendants(os.getpid()):
            self._kill(descendants(os.getpid()))
            time.sleep(0.02)
        subprocess.run(["chmod", "-R", "u+rwx", self.root], stderr=subprocess.DEVNULL, check=False)
        shutil.rmtree(self.root, ignore_errors=True)

    @staticmethod
    def _kill(pids):
        for pid in pids:
            try:
                os.kill(pid, signal.SIGKILL)
                os.waitpid(pid, os.WNOHANG)
            except (ProcessLookupError, ChildProcessError):
                pass

    def start(self, *arguments, program=None, env=None, cwd=None, wait=True):
        """Starts zan (or another program). With wait, its first window is there on return."""
        environment = {name: value for name, value in {**self.env, **(env or {})}.items() if value is not None}
        stdout, stderr = (os.path.join(self.root, f"{name}-{len(self.apps)}") for name in ("stdout", "stderr"))
        with open(stdout, "wb") as out, open(stderr, "wb") as err:
            process = subprocess.Popen([program or self.zan, *arguments], env=environment, cwd=cwd or self.work,
                                       stdin=subprocess.DEVNULL, stdout=out, stderr=err)
        app = App(self, process, stdout, stderr)
        self.apps.append(app)
        if wait:
            app.window()
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
        """What that program prints; fails with it."""
        done = subprocess.run(command, env=self.env, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                              stderr=subprocess.PIPE, text=True, check=False)
        assert not check or done.returncode == 0, f"{command}: {done.stdout}{done.stderr}"
        return done.stdout

    def xdotool(self, *arguments):
        return self.said("xdotool", *arguments)

    def windows(self):
        """(id, process id, title) of each window that the window manager knows."""
        lines = [line.split(None, 4) for line in self.said("wmctrl", "-l", "-p", check=False).splitlines()]
        return [(words[0], int(words[2]), "".join(words[4:])) for words in lines if len(words) > 3]

    def make(self, name, content=""):
        """Makes a file below the scratch directory (a directory when the name ends in "/")."""
        path = os.path.join(self.work, name)
        os.makedirs(os.path.dirname(path), exist_ok=True)
        if not name.endswith("/"):
            with open(path, "wb") as file:
                file.write(content if isinstance(content, bytes) else content.encode())
        return path.rstrip("/")


def run(tests, place=Desktop):
    """Runs each function of the table in a place of its own, a desktop unless another is named; prints what fails.
    For `sys.exit(run([...]))`."""
    failed = 0
    for test in tests:
        begun = time.monotonic()
        try:
            with place(sys.argv[1]) as here:
                test(here)
            print(f"ok   {test.__name__} ({time.monotonic() - begun:.1f} s)", flush=True)
        except AssertionError as error:
            failed += 1
            line = error.__traceback__
            while line.tb_next:
                line = line.tb_next
            print(f"FAIL {test.__name__}, line {line.tb_lineno}: {error}", flush=True)
    return 1 if failed else 0
