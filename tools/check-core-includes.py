#!/usr/bin/env python3
"""kevro_core must build and run without a window: none of its sources, nor any project header they
reach, may include a widget, a control or a screen. Qt's include root is on every target's path, so an
include of <QtWidgets/...> compiles in kevro_core and only the link (or nothing at all) would notice.

usage: check-core-includes.py SOURCE_DIR QT_HEADERS_DIR CORE_SOURCES
  CORE_SOURCES  the kevro_core target's sources, separated by ';' (as CMake lists them)
"""
import os
import re
import sys

ALLOWED_QT_MODULES = {"QtCore", "QtSql", "QtNetwork"}
INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]', re.MULTILINE)


def main():
    source_dir, qt_headers, sources = sys.argv[1], sys.argv[2], sys.argv[3]
    src = os.path.join(source_dir, "src")
    pending = [os.path.join(source_dir, s) if not os.path.isabs(s) else s for s in sources.split(";") if s]
    core_sources = {os.path.normpath(p) for p in pending}
    seen = set()
    faults = []

    def qt_module_of(header):
        for module in ALLOWED_QT_MODULES:
            if os.path.exists(os.path.join(qt_headers, module, header)):
                return module
        return None

    while pending:
        path = os.path.normpath(pending.pop())
        if path in seen:
            continue
        seen.add(path)
        with open(path, encoding="utf-8") as f:
            text = f.read()
        rel = os.path.relpath(path, source_dir)
        for kind, name in INCLUDE.findall(text):
            if kind == '"':
                if name.startswith("controls/") or re.search(r"(^|/)frm\w*\.h$", name):
                    faults.append(f"{rel}: includes the screen-side header \"{name}\"")
                    continue
                target = os.path.join(src, name)
                if not os.path.exists(target):
                    target = os.path.join(os.path.dirname(path), name)
                if os.path.exists(target):
                    # A header whose code is built into the screens' library is the screens' own.
                    body = os.path.normpath(os.path.splitext(target)[0] + ".cpp")
                    if os.path.exists(body) and body not in core_sources:
                        faults.append(f"{rel}: includes \"{name}\", whose code belongs to kevro_gui")
                        continue
                    pending.append(target)
                continue
            if name.startswith("Qt") and "/" in name:
                module = name.split("/", 1)[0]
                if module not in ALLOWED_QT_MODULES:
                    faults.append(f"{rel}: includes <{name}> from {module}")
            elif re.match(r"^Q[A-Z]\w*$", name) and qt_module_of(name) is None:
                faults.append(f"{rel}: includes <{name}>, which is not in {', '.join(sorted(ALLOWED_QT_MODULES))}")

    for fault in faults:
        print(fault)
    print(f"{len(seen)} files of kevro_core checked, {len(faults)} include(s) of widgets, controls or screens")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
