#!/usr/bin/env python3
"""An install into a staging root, by hand and as a Debian package: complete, valid, starts from there, and goes
without a trace."""
import glob
import os
import re
import shutil
import subprocess
import sys

from harness import read, run, wait_for


def said(*command, **options):
    done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False, **options)
    assert done.returncode == 0, f"{command}: {done.stdout}"
    return done.stdout


def staged(desk):
    root = os.path.join(desk.root, "staging")
    build = os.path.dirname(desk.bin)
    said("cmake", "--install", build, "--prefix", "/usr", env=dict(os.environ, DESTDIR=root))
    return root


def files_below(root):
    return sorted(os.path.relpath(os.path.join(folder, name), root)
                  for folder, _, names in os.walk(root) for name in names)


def installs_what_a_desktop_needs(desk):
    root = staged(desk)
    have = set(files_below(root))
    wanted = ["bin/zan", "bin/zan-op", "bin/zan-launch", "share/applications/zan.desktop", "share/man/man1/zan.1",
              "share/man/man1/zan-op.1", "share/man/man1/zan-launch.1", "share/doc/zan/copyright",
              "share/metainfo/zan.metainfo.xml", "share/user-tmpfiles.d/zan.conf",
              "share/icons/hicolor/scalable/apps/zan.svg", "share/icons/hicolor/symbolic/apps/zan-symbolic.svg",
              "share/dbus-1/services/org.freedesktop.FileManager1.service"]
    wanted += ["libexec/zan/" + name for name in ("conwin", "kored", "imgshow", "roamer", "mediaplay", "streamplay",
                                                  "corescan", "procsig")]
    missing = [name for name in wanted if "usr/" + name not in have]
    assert not missing, f"not installed: {missing}"
    for tool, path in (("desktop-file-validate", "applications/zan.desktop"),
                       ("appstreamcli", "metainfo/zan.metainfo.xml")):
        if shutil.which(tool):
            extra = ["validate", "--no-net"] if tool == "appstreamcli" else []
            said(tool, *extra, os.path.join(root, "usr/share", path))
    for page in ("zan.1", "zan-op.1"):
        warnings = said("man", "--warnings", "-E", "UTF-8", "-l", "-Tutf8", "-Z",
                        os.path.join(root, "usr/share/man/man1", page), env=dict(os.environ, MANWIDTH="80"))
        assert "warning" not in warnings, warnings
    starts_below(desk, root)


def tells_of_the_same_options_in_help_and_manual(desk):
    option = re.compile(r"(?<![\w-])(?:--[a-z]+(?:-[a-z]+)*|-[A-Za-z0])")
    for program in ("zan", "zan-op"):
        shown = said(os.path.join(desk.bin, program), "--help", env=desk.env)
        page = os.path.join(staged(desk), "usr/share/man/man1", program + ".1")
        manual = said("man", "-E", "ascii", "-l", "-Tascii", page, env=dict(os.environ, MANWIDTH="200", GROFF_NO_SGR="1"))
        manual = re.sub(".\b", "", manual)
        everywhere = {"--help", "--version"}
        assert set(option.findall(shown)) | everywhere == set(option.findall(manual)) | everywhere, (
            program, set(option.findall(shown)) ^ set(option.findall(manual)))
        assert said(os.path.join(desk.bin, program), "--version", env=desk.env).startswith(program + " ")


def starts_below(desk, root):
    """Starts zan by its launcher from that root, as a newcomer without a settings directory does, and opens a
    terminal: a stand-in that notes the PATH it got."""
    shutil.rmtree(os.path.join(desk.home, ".vr"), ignore_errors=True)
    noted = os.path.join(desk.root, "noted")
    terminal = desk.make("terminal", f'#!/bin/sh\nprintf "%s" "$PATH" >{noted}.new && mv {noted}.new {noted}\n')
    os.chmod(terminal, 0o755)
    app = desk.start(desk.work, program=os.path.join(root, "usr/bin/zan-launch"),
                     env={"PATH": os.path.join(root, "usr/bin") + ":" + os.environ["PATH"], "TERMINAL": terminal})
    assert os.readlink(f"/proc/{app.pid}/exe") == os.path.join(root, "usr/bin/zan")
    app.keys("ctrl+t")
    wait_for(lambda: os.path.exists(noted), "a terminal by the companion")
    assert os.path.join(root, "usr/libexec/zan") in map(os.path.normpath, read(noted).split(":"))
    app.end()
    assert os.path.exists(desk.record), "a newcomer's settings are not kept"
    assert not app.errors(), app.errors()


def dpkg(root, *arguments):
    """dpkg for a root of its own that holds no other package."""
    admin = os.path.join(root, "var/lib/dpkg")
    for name in ("info", "updates", "triggers"):
        os.makedirs(os.path.join(admin, name), exist_ok=True)
    for name in ("status", "available"):
        with open(os.path.join(admin, name), "a", encoding="utf-8"):
            pass
    return said("dpkg", "--root=" + root, "--force-not-root", "--force-bad-path", "--force-depends",
                "--force-script-chrootless", "--log=/dev/null", *arguments)


def makes_a_debian_package(desk):
    for tool in ("cpack", "dpkg", "dpkg-deb", "dpkg-shlibdeps"):
        if not shutil.which(tool):
            print("     left out: no " + tool)
            return
    made = os.path.join(desk.root, "package")
    said("cpack", "-G", "DEB", "-B", made, cwd=os.path.dirname(desk.bin))
    package, = glob.glob(made + "/*.deb")
    depends = said("dpkg-deb", "--field", package, "Depends").split(", ")
    for wanted in ("libqt6widgets6", "libqt6svg6", "libc6", "file", "xterm"):
        assert [name for name in depends if name.split()[0] == wanted], f"does not depend on {wanted}: {depends}"
    content = said("dpkg-deb", "--contents", package)
    assert "./usr/share/man/man1/zan.1.gz" in content and "./usr/local" not in content, content
    assert all(line.split()[1] == "root/root" for line in content.splitlines()), content
    if shutil.which("lintian"):
        said("lintian", "--allow-root", "--fail-on", "error", package)
    root = os.path.join(desk.root, "machine")
    dpkg(root, "--install", package)
    service = read(os.path.join(root, "usr/share/dbus-1/services/org.freedesktop.FileManager1.service"))
    assert [word for word in service.split() if "/" in word] == ["Exec=/usr/bin/env"], "bound to one place"
    starts_below(desk, root)
    dpkg(root, "--purge", "zan")
    left = [path for path in files_below(root) if not path.startswith("var/lib/dpkg/")]
    assert not left and not os.path.exists(os.path.join(root, "usr")), left


sys.exit(run([installs_what_a_desktop_needs, tells_of_the_same_options_in_help_and_manual,
              makes_a_debian_package]))
