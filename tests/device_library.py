#!/usr/bin/env python3
"""Holds what cmake/device_library.cmake refuses, and takes: tests/device_library.py CMAKE COMPILER LIBHAL OTHER-LIBRARY

The tree is configured as docs/porting.md tells, for the console alone, with a libhal.so.2 and with what is none. Nothing is
built."""

import os
import pathlib
import shutil
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parent.parent


def main():
    cmake, compiler, library, other_library = sys.argv[1:]
    wrong = []
    with tempfile.TemporaryDirectory() as directory:
        place = pathlib.Path(directory)

        def configure(build, variables):
            words = [f"-D{name}={value}" for name, value in variables.items()]
            ran = subprocess.run([cmake, "-S", ROOT, "-B", place / build, "-G", "Ninja", "-DBUILD_TESTING=OFF",
                                  f"-DCMAKE_CXX_COMPILER={compiler}", *words],
                                 stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
            return ran.returncode, " ".join(ran.stdout.split())

        def refuses(text, build="build", **variables):
            status, told = configure(build, variables)
            if status == 0 or text not in told:
                wrong.append(f"{variables} is not refused with \"{text}\", but: {told}")

        interface = place / "interface"
        shutil.copytree(ROOT / "hal", interface / "hal")
        lacking = place / "lacking"
        shutil.copytree(ROOT / "hal", lacking / "hal", ignore=shutil.ignore_patterns("rtu.h"))
        missing = place / "libhal.so.2"

        refuses("R47_HAL_INCLUDE_DIR: there is no library that it belongs to: tell R47_HAL_LIBRARY, too",
                R47_HAL_INCLUDE_DIR=interface)
        refuses(f"R47_HAL_INCLUDE_DIR: there is no hal/rtu.h in {lacking}",
                R47_HAL_INCLUDE_DIR=lacking, R47_HAL_LIBRARY=library)
        refuses(f"R47_HAL_LIBRARY: {missing} is no library with the SONAME libhal.so.2",
                R47_HAL_INCLUDE_DIR=interface, R47_HAL_LIBRARY=missing)
        refuses(f"R47_HAL_LIBRARY: {other_library} is no library with the SONAME libhal.so.2",
                R47_HAL_LIBRARY=other_library)
        status, told = configure("build", {"R47_HAL_INCLUDE_DIR": interface, "R47_HAL_LIBRARY": library})
        if status != 0:
            wrong.append(f"{library} is refused: {told}")
        # The compiler is asked once for each build where it looks by itself.
        os.environ["CPLUS_INCLUDE_PATH"] = str(interface)
        refuses(f"R47_HAL_INCLUDE_DIR: the compiler takes ours before {interface}/hal: copy that to a directory of its own",
                build="searched", R47_HAL_INCLUDE_DIR=interface, R47_HAL_LIBRARY=library)
    print("\n".join(wrong) or "what is no library of the device is refused")
    return bool(wrong)


sys.exit(main())
