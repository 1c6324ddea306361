#!/usr/bin/env python3
"""Walks the includes: no circle, no toolkit in the engine, no engine file that includes a ui/ folder's.

Usage: check_includes.py ROOT. Prints each fault; exit status 1 when there is one."""
import os
import re
import sys

ENGINE = ("core", "dirmodel", "views", "fileops", "commands", "platform")
FACE_DIRS = ("core/toolkit", "platform/qt")


def is_face(path):
    folder = os.path.dirname(path)
    return folder.endswith("/ui") or folder in FACE_DIRS


def main(root):
    faults = []
    graph = {}
    for top in ENGINE + ("op",):
        for folder, _, names in os.walk(os.path.join(root, top)):
            for name in names:
                if not name.endswith((".h", ".cpp")):
                    continue
                path = os.path.relpath(os.path.join(folder, name), root)
                with open(os.path.join(folder, name), encoding="utf-8") as text:
                    includes = re.findall(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]', text.read(), re.M)
                own = [target for mark, target in includes if mark == '"' and os.path.exists(os.path.join(root, target))]
                graph[path] = own
                header = path[:-4] + ".h"
                if name.endswith(".cpp") and os.path.exists(os.path.join(root, header)):
                    if not includes or includes[0][1] != header:
                        faults.append(f"{path}: does not include {header} first")
                if is_face(path):
                    continue
                for mark, target in includes:
                    if mark == "<" and re.match(r"Q[A-Z]|Qt", target):
                        faults.append(f"{path}: the engine includes the toolkit's {target}")
                    if mark == '"' and (is_face(target) or target.startswith("ui_")):
                        faults.append(f"{path}: the engine includes the face's {target}")
                    if mark == '"' and target.startswith("../"):
                        faults.append(f"{path}: {target} is not written from the root")
    done, open_path = set(), []

    def walk(path):
        if path in done:
            return
        if path in open_path:
            faults.append("circle: " + " -> ".join(open_path[open_path.index(path):] + [path]))
            return
        open_path.append(path)
        for target in graph.get(path, ()):
            walk(target)
        open_path.pop()
        done.add(path)

    for path in sorted(graph):
        walk(path)
    print("\n".join(faults) or f"{len(graph)} files, no fault")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1]))
