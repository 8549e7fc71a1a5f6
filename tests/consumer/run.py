#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Installs a build into a folder of its own, moves that folder, and builds a small project against it.

    run.py --build build/release --through cmake|pkg-config [--compiler g++] [--static]
"""

import argparse
import os
import pathlib
import shlex
import shutil
import subprocess
import sys
import tempfile

PROJECT = pathlib.Path(__file__).resolve().parent / "project"
EXPECTED = "@(#)PROGRAM:EstateBook_Model  PROJECT:EstateBook-1\nFlat 2\n"


def run(command, **options):
    print("+", shlex.join(map(str, command)), flush=True)
    done = subprocess.run(command, text=True, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, **options)
    if done.returncode != 0:
        sys.exit(f"{done.stdout}\nexit code {done.returncode}")
    return done.stdout


def through_cmake(tree, folder, options):
    run(["cmake", "-S", PROJECT, "-B", folder, "-G", "Ninja", f"-DCMAKE_PREFIX_PATH={tree}",
         f"-DCMAKE_CXX_COMPILER={options.compiler}", "-DCMAKE_FIND_USE_PACKAGE_REGISTRY=OFF"])
    run(["cmake", "--build", folder])
    return folder / "consumer"


def through_pkg_config(tree, folder, options):
    description = next(tree.glob("**/EstateBook_Model.pc"))
    environment = {**os.environ, "PKG_CONFIG_PATH": str(description.parent)}
    run(["pkg-config", "--exact-version=1.0.0", "EstateBook_Model"], env=environment)
    query = ["pkg-config", "--cflags", "--libs"] + (["--static"] if options.static else []) + ["EstateBook_Model"]
    flags = run(query, env=environment).split()
    rpath = f"-Wl,-rpath,{description.parent.parent}"
    run([options.compiler, "-std=c++20", PROJECT / "main.cpp", "-o", folder / "consumer", *flags, rpath])
    return folder / "consumer"


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    parser.add_argument("--build", type=pathlib.Path, required=True)
    parser.add_argument("--through", choices=("cmake", "pkg-config"), required=True)
    parser.add_argument("--compiler", default="c++")
    parser.add_argument("--static", action="store_true", help="the library is an archive")
    options = parser.parse_args()

    with tempfile.TemporaryDirectory(prefix="consumer-") as name:
        first, tree, folder = (pathlib.Path(name) / each for each in ("first", "moved", "project"))
        folder.mkdir()
        run(["cmake", "--install", options.build, "--prefix", first])
        shutil.move(first, tree)
        build = through_cmake if options.through == "cmake" else through_pkg_config
        consumer = build(tree, folder, options)
        if options.static:
            # A program that holds the library in itself finds the model's resource from its own place.
            (tree / "bin").mkdir(exist_ok=True)
            consumer = shutil.copy(consumer, tree / "bin")
        printed = run([consumer], cwd=folder)
        if printed != EXPECTED:
            sys.exit(f"expected\n{EXPECTED}\nbut it printed\n{printed}")
        program = tree / "bin" / "estatebook"
        if program.exists():
            run([program, "--help"], cwd=folder)
        archives, objects = list(tree.glob("**/*.a")), list(tree.glob("**/*.so*"))
        if bool(archives) != options.static or bool(objects) == options.static:
            sys.exit(f"the wrong kind of library was installed: {archives + objects}")
    return 0


if __name__ == "__main__":
    sys.exit(main())
