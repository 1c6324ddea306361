#!/usr/bin/env python3
"""An install into a staging root: complete, valid, starts from there, and goes without a trace."""
import os
import shutil
import subprocess
import sys

from harness import run


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
              "share/man/man1/zan-op.1", "share/metainfo/zan.metainfo.xml", "share/user-tmpfiles.d/zan.conf",
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


def starts_from_there_and_finds_its_companions(desk):
    root = staged(desk)
    shutil.rmtree(os.path.join(desk.home, ".vr"))
    app = desk.start(desk.work, program=os.path.join(root, "usr/bin/zan-launch"),
                     env={"PATH": os.path.join(root, "usr/bin") + ":" + os.environ["PATH"]})
    with open(f"/proc/{app.pid}/exe", "rb") as running:
        assert running.read(4) == b"\x7fELF"
    assert os.readlink(f"/proc/{app.pid}/exe") == os.path.join(root, "usr/bin/zan")
    app.close()
    assert app.wait() == 0, app.errors()
    assert os.path.exists(os.path.join(desk.settings, "config.003")), "a newcomer's settings are not kept"
    assert not app.errors(), app.errors()


def leaves_no_trace(desk):
    root = staged(desk)
    with open(os.path.join(os.path.dirname(desk.bin), "install_manifest.txt"), encoding="utf-8") as manifest:
        for path in manifest.read().split("\n"):
            if path:
                os.remove(root + path)
    assert files_below(root) == []


sys.exit(run([installs_what_a_desktop_needs, starts_from_there_and_finds_its_companions, leaves_no_trace]))
