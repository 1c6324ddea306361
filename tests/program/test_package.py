#!/usr/bin/env python3
"""An install by hand and as a Debian package: complete, valid, starts from there, and goes without a trace."""
import glob
import os
import re
import shutil
import subprocess

import harness
from harness import read, run, wait_for


def said(*command, **options):
    return harness.said(*command, stderr=subprocess.STDOUT, **options)


def files_below(root):
    return {os.path.relpath(os.path.join(folder, name), root) for folder, _, names in os.walk(root) for name in names}


def manual(root, page, width, *options):
    """A page of the manual as the formatter gives it."""
    return said("man", *options, "-l", os.path.join(root, "usr/share/man/man1", page + ".1"),
                env=dict(os.environ, MANWIDTH=width, GROFF_NO_SGR="1"))


def installs_what_a_desktop_needs(desk):
    root = os.path.join(desk.root, "staging")
    said("cmake", "--install", os.path.dirname(desk.bin), "--prefix", "/usr", env=dict(os.environ, DESTDIR=root))
    wanted = {"bin/zan", "bin/zan-op", "bin/zan-launch", "share/applications/zan.desktop", "share/man/man1/zan.1",
              "share/man/man1/zan-op.1", "share/man/man1/zan-launch.1", "share/doc/zan/copyright",
              "share/metainfo/zan.metainfo.xml", "share/user-tmpfiles.d/zan.conf",
              "share/icons/hicolor/scalable/apps/zan.svg", "share/icons/hicolor/symbolic/apps/zan-symbolic.svg",
              "share/dbus-1/services/org.freedesktop.FileManager1.service"}
    wanted |= {"libexec/zan/" + name for name in ("conwin", "kored", "imgshow", "roamer", "mediaplay", "streamplay",
                                                  "corescan", "procsig")}
    missing = wanted - files_below(os.path.join(root, "usr"))
    assert not missing, f"not installed: {missing}"
    for tool, *arguments in (("desktop-file-validate", "applications/zan.desktop"),
                             ("appstreamcli", "validate", "--no-net", "metainfo/zan.metainfo.xml")):
        if shutil.which(tool):
            said(tool, *arguments[:-1], os.path.join(root, "usr/share", arguments[-1]))
    option = re.compile(r"(?<![\w-])(?:--[a-z]+(?:-[a-z]+)*|-[A-Za-z0])")
    for program in ("zan", "zan-op"):
        warnings = manual(root, program, "80", "--warnings", "-E", "UTF-8", "-Tutf8", "-Z")
        assert "warning" not in warnings, warnings
        page = re.sub(".\b", "", manual(root, program, "200", "-E", "ascii", "-Tascii"))
        shown = said(os.path.join(desk.bin, program), "--help", env=desk.env)
        told, in_help = (set(option.findall(text)) | {"--help", "--version"} for text in (page, shown))
        assert told == in_help, f"the manual and --help of {program} differ: {told ^ in_help}"
        assert said(os.path.join(desk.bin, program), "--version", env=desk.env).startswith(program + " ")
    starts_below(desk, root)


def starts_below(desk, root):
    """Starts zan by its launcher, without settings, and opens a terminal: a stand-in that notes its PATH."""
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
    assert not app.printed(), app.printed()


def makes_a_debian_package(desk):
    made, root = os.path.join(desk.root, "package"), os.path.join(desk.root, "machine")
    said("cpack", "-G", "DEB", "-B", made, cwd=os.path.dirname(desk.bin))
    package, = glob.glob(made + "/*.deb")
    depends = [name.split()[0] for name in said("dpkg-deb", "--field", package, "Depends").split(", ")]
    wanted = {"libqt6widgets6", "libqt6svg6", "libc6", "file", "xterm"}
    assert wanted <= set(depends), f"does not depend on {wanted - set(depends)}"
    content = said("dpkg-deb", "--contents", package)
    assert "./usr/share/man/man1/zan.1.gz" in content and "./usr/local" not in content, content
    assert content.count("root/root") == len(content.splitlines()), content
    if shutil.which("lintian"):
        said("lintian", "--allow-root", "--fail-on", "error", package)
    admin = os.path.join(root, "var/lib/dpkg")
    said("mkdir", "-p", admin + "/info", admin + "/updates", admin + "/triggers")
    said("touch", admin + "/status", admin + "/available")
    dpkg = ("dpkg", "--root=" + root, "--force-not-root", "--force-bad-path", "--force-depends",
            "--force-script-chrootless", "--log=/dev/null")
    said(*dpkg, "--install", package)
    service = read(os.path.join(root, "usr/share/dbus-1/services/org.freedesktop.FileManager1.service"))
    assert [word for word in service.split() if "/" in word] == ["Exec=/usr/bin/env"], "bound to one place"
    starts_below(desk, root)
    said(*dpkg, "--purge", "zan")
    left = os.listdir(root), [path for path in files_below(root) if not path.startswith("var/lib/dpkg/")]
    assert left == (["var"], []), left


can_pack = all(map(shutil.which, ("cpack", "dpkg", "dpkg-deb", "dpkg-shlibdeps")))
run([installs_what_a_desktop_needs] + ([makes_a_debian_package] if can_pack else []))
