"""Runs the real program in a real window on a display of its own, and looks at what it does.

    with Desktop(sys.argv[1]) as desk:          # the build's bin directory
        app = desk.start("/some/directory")     # a zan with desk.home as HOME
        app.keys("ctrl+a"); app.type("readme"); app.click(x, y)
        desk.wait_for(lambda: app.title().startswith("/tmp"))
        app.close(); assert app.wait() == 0

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


def wait_for(condition, what="condition", patience=PATIENCE):
    """Waits until condition() is true and returns its value."""
    end = time.monotonic() + patience
    while True:
        value = condition()
        if value:
            return value
        if time.monotonic() > end:
            raise AssertionError("never happened: " + what)
        time.sleep(0.02)


def descendants(root):
    """Process ids of everything below root, deepest first."""
    children = {}
    for name in os.listdir("/proc"):
        if not name.isdigit():
            continue
        try:
            with open(f"/proc/{name}/stat", encoding="utf-8", errors="replace") as stat:
                parent = int(stat.read().rpartition(")")[2].split()[1])
        except (OSError, IndexError, ValueError):
            continue
        children.setdefault(parent, []).append(int(name))
    found, todo = [], [root]
    while todo:
        below = children.get(todo.pop(), [])
        found += below
        todo += below
    return found[::-1]


class App:
    """One running program with (at least) one window."""

    def __init__(self, desk, process, stdout, stderr):
        self.desk, self.process = desk, process
        self._stdout, self._stderr = stdout, stderr
        self._window = None

    @property
    def pid(self):
        return self.process.pid

    def running(self):
        return self.process.poll() is None

    def windows(self, visible=True):
        """Window ids of the program's top-level windows."""
        options = ["--all", "--onlyvisible"] if visible else ["--all"]
        found = self.desk.xdotool("search", *options, "--pid", str(self.pid), "--name", ".", check=False).split()
        return [w for w in found if self.desk.is_managed(w)]

    def window(self):
        """The first window that the program showed. Waits for it."""
        if self._window is None:
            def shown():
                if not self.running():
                    raise AssertionError(f"ended with {self.process.returncode} before it had a window: "
                                         + self.errors())
                return self.windows()
            self._window = wait_for(shown, "a window")[0]
        return self._window

    def other_window(self, title):
        """Waits for another window of the program whose title holds that text."""
        def find():
            return [w for w in self.windows() if w != self._window and title in self.desk.title_of(w)]
        return wait_for(find, f"a window titled {title!r}")[0]

    def title(self, window=None):
        return self.desk.title_of(window or self.window())

    def geometry(self, window=None):
        """x, y, width, height of the window's content."""
        text = self.desk.xdotool("getwindowgeometry", "--shell", window or self.window())
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

    def click(self, x, y, button=1, count=1, window=None, modifier=None):
        """Clicks at a place relative to the window's content."""
        window = window or self.window()
        self.desk.xdotool("mousemove", "--window", window, str(x), str(y))
        if modifier:
            self.desk.xdotool("keydown", modifier)
        self.desk.xdotool("click", "--repeat", str(count), "--delay", "60", str(button))
        if modifier:
            self.desk.xdotool("keyup", modifier)

    def signal(self, number):
        os.kill(self.pid, number)

    def close(self, window=None):
        """Closes the window as its close button does."""
        subprocess.run(["wmctrl", "-i", "-c", hex(int(window or self.window()))], env=self.desk.env, check=True)

    def wait(self, patience=PATIENCE):
        """The exit status (negative: ended by that signal)."""
        try:
            return self.process.wait(patience)
        except subprocess.TimeoutExpired:
            raise AssertionError("the program does not end") from None

    def output(self):
        return self._read(self._stdout)

    def errors(self):
        return self._read(self._stderr)

    @staticmethod
    def _read(path):
        with open(path, encoding="utf-8", errors="replace") as file:
            return file.read()


class Desktop:
    """A display server, a window manager, a HOME and a scratch directory."""

    wait_for = staticmethod(wait_for)

    def __init__(self, bin_dir, size="1280x800", window_manager=True):
        self.bin = os.path.abspath(bin_dir)
        self.zan = os.path.join(self.bin, "zan")
        self.size, self.window_manager = size, window_manager
        self.apps, self.count = [], 0

    def __enter__(self):
        for tool in ("Xvfb", "xdotool", "wmctrl", "openbox", "import"):
            if not shutil.which(tool):
                print("skipped: no " + tool)
                sys.exit(SKIP)
        ctypes.CDLL(None).prctl(PR_SET_CHILD_SUBREAPER, 1, 0, 0, 0)
        self.root = tempfile.mkdtemp(prefix="zan-program-")
        self.home = os.path.join(self.root, "home")
        self.work = os.path.join(self.root, "work")
        os.makedirs(os.path.join(self.home, ".vr"))
        os.makedirs(self.work)
        self.settings = os.path.join(self.home, ".vr", "zan")
        try:
            self._start_display()
        except BaseException:
            self.__exit__(None, None, None)
            raise
        return self

    def _start_display(self):
        read, write = os.pipe()
        self.server = subprocess.Popen(["Xvfb", "-displayfd", str(write), "-screen", "0", self.size + "x24", "-nolisten", "tcp"],
                         pass_fds=[write], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        os.close(write)
        with os.fdopen(read) as pipe:
            number = pipe.readline().strip()
        if not number:
            raise AssertionError("the display server did not start")
        self.display = ":" + number
        self.env = {name: value for name, value in os.environ.items()
                    if not name.startswith(("QT_", "XDG_", "WAYLAND", "DBUS_", "GTK_"))}
        self.env.update(DISPLAY=self.display, HOME=self.home, LC_ALL="C.UTF-8", QT_QPA_PLATFORM="xcb",
                        XDG_RUNTIME_DIR=self.root, NO_AT_BRIDGE="1")
        if self.window_manager:
            manager = []

            def managed():
                if not manager or manager[0].poll() is not None:
                    config = os.path.join(self.root, "openbox.xml")  # nobody's, and not a file that openbox complains of
                    with open(config, "w", encoding="utf-8") as file:
                        file.write('<openbox_config xmlns="http://openbox.org/3.4/rc"><menu/></openbox_config>')
                    manager[:] = [subprocess.Popen(["openbox", "--config-file", config], env=self.env,
                                                   cwd=self.root, stdout=subprocess.DEVNULL,
                                                   stderr=subprocess.DEVNULL)]
                return subprocess.run(["wmctrl", "-m"], env=self.env, stdout=subprocess.DEVNULL,
                                      stderr=subprocess.DEVNULL, check=False).returncode == 0
            wait_for(managed, "a window manager")

    def __exit__(self, kind, error, trace):
        if error is not None and hasattr(self, "env"):
            self._explain()
        server = getattr(self, "server", None)
        self._kill([pid for pid in descendants(os.getpid()) if not server or pid != server.pid])
        if server and server.poll() is None:  # told to end, it takes its lock file and its socket with it
            server.terminate()
            try:
                server.wait(10)
            except subprocess.TimeoutExpired:
                pass
        for _ in range(50):
            self._kill(descendants(os.getpid()))
            try:
                while os.waitpid(-1, os.WNOHANG)[0]:
                    pass
            except ChildProcessError:
                break
            time.sleep(0.02)
        subprocess.run(["chmod", "-R", "u+rwx", self.root], stderr=subprocess.DEVNULL, check=False)
        shutil.rmtree(self.root, ignore_errors=True)

    @staticmethod
    def _kill(pids):
        for pid in pids:
            try:
                os.kill(pid, signal.SIGKILL)
            except ProcessLookupError:
                pass

    def _explain(self):
        for app in self.apps:
            print(f"pid {app.pid}: status {app.process.poll()}, said {app.output()!r} {app.errors()!r}")
        keep = os.environ.get("ZAN_TEST_SCREENSHOT")
        if keep:
            self.screenshot(keep)

    def start(self, *arguments, program=None, env=None, cwd=None, wait=True):
        """Starts zan (or another program). With wait, its first window is there on return."""
        self.count += 1
        stdout = os.path.join(self.root, f"stdout-{self.count}")
        stderr = os.path.join(self.root, f"stderr-{self.count}")
        environment = dict(self.env)
        for name, value in (env or {}).items():
            if value is None:
                environment.pop(name, None)
            else:
                environment[name] = value
        with open(stdout, "wb") as out, open(stderr, "wb") as err:
            process = subprocess.Popen([program or self.zan, *arguments], env=environment, cwd=cwd or self.work,
                                       stdin=subprocess.DEVNULL, stdout=out, stderr=err)
        app = App(self, process, stdout, stderr)
        self.apps.append(app)
        if wait:
            app.window()
        return app

    def xdotool(self, *arguments, check=True):
        done = subprocess.run(["xdotool", *arguments], env=self.env, stdout=subprocess.PIPE,
                              stderr=subprocess.PIPE, text=True, check=False)
        if check and done.returncode != 0:
            raise AssertionError(f"xdotool {arguments}: {done.stderr}")
        return done.stdout

    def title_of(self, window):
        return self.xdotool("getwindowname", window, check=False).rstrip("\n")

    def is_managed(self, window):
        if not self.window_manager:
            return True
        listed = subprocess.run(["wmctrl", "-l"], env=self.env, stdout=subprocess.PIPE, text=True,
                                stderr=subprocess.DEVNULL, check=False).stdout
        return int(window) in [int(line.split()[0], 16) for line in listed.splitlines()]

    def screenshot(self, path):
        subprocess.run(["import", "-window", "root", path], env=self.env, check=True)

    def make(self, name, content=""):
        """Makes a file below the scratch directory (a directory when the name ends in "/")."""
        path = os.path.join(self.work, name)
        os.makedirs(path if name.endswith("/") else os.path.dirname(path), exist_ok=True)
        if not name.endswith("/"):
            with open(path, "wb") as file:
                file.write(content if isinstance(content, bytes) else content.encode())
        return path


def run(tests):
    """Runs each function of the table on a desktop of its own; prints what fails. For `sys.exit(run([...]))`."""
    failed = 0
    for test in tests:
        try:
            with Desktop(sys.argv[1]) as desk:
                test(desk)
            print("ok   " + test.__name__, flush=True)
        except AssertionError as error:
            failed += 1
            line = error.__traceback__
            while line.tb_next:
                line = line.tb_next
            print(f"FAIL {test.__name__}, line {line.tb_lineno}: {error}", flush=True)
    return 1 if failed else 0
