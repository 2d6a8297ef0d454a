#!/usr/bin/env python3
"""install_test.py CMAKE BUILD [--prefix PREFIX] [--cc CC] [--cxx CXX]: installs BUILD into a temporary prefix, moves it
elsewhere, and builds and runs outside programs against it: a CMake project in C++ (shared and static), a C99 program by
pkg-config, and a host that loads the library and looks its names up. With --prefix it takes what is installed there."""
import argparse
import os
import pathlib
import shutil
import subprocess
import tempfile

HERE = pathlib.Path(__file__).resolve().parent
WANTED = "caf\u00e9 -> 0063 0061 0066 0129 -> 63 61 66 E9\n"


def run(*command, **options):
    done = subprocess.run([str(part) for part in command], capture_output=True, text=True, check=False, **options)
    if done.returncode != 0:
        raise SystemExit(f"{' '.join(map(str, command))}: status {done.returncode}\n{done.stdout[-2000:]}{done.stderr}")
    return done.stdout


def expect(what, printed):
    if printed != WANTED:
        raise SystemExit(f"{what} printed {printed!r}, not {WANTED!r}")
    print(f"{what}: as wanted")


def installed(cmake, build, folder):
    """Installs, and moves the tree, which must not mind."""
    first, prefix = folder / "first", folder / "moved"
    run(cmake, "--install", build, "--prefix", first)
    first.rename(prefix)
    for path in prefix.rglob("*"):
        if path.suffix in (".cmake", ".pc") and str(first) in path.read_text():
            raise SystemExit(f"{path.relative_to(prefix)} holds the place that it was installed to")
    return prefix


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("cmake")
    parser.add_argument("build", type=pathlib.Path)
    parser.add_argument("--prefix", type=pathlib.Path)
    parser.add_argument("--cc", default="cc")
    parser.add_argument("--cxx", default="c++")
    args = parser.parse_args()
    with tempfile.TemporaryDirectory() as temporary:
        folder = pathlib.Path(temporary)
        prefix = args.prefix or installed(args.cmake, args.build, folder)
        library = next(path for path in prefix.glob("lib*/**/libkxstr.so"))
        environment = {**os.environ, "LD_LIBRARY_PATH": str(library.parent)}

        run(args.cmake, "-S", HERE / "cmake_consumer", "-B", folder / "cmake", f"-DCMAKE_PREFIX_PATH={prefix}",
            "-DCMAKE_BUILD_TYPE=Release", f"-DCMAKE_CXX_COMPILER={args.cxx}")
        run(args.cmake, "--build", folder / "cmake")
        expect("CMake, shared library", run(folder / "cmake" / "shared", env=environment))
        expect("CMake, static library", run(folder / "cmake" / "static"))

        if shutil.which("pkg-config"):
            packages = {**os.environ, "PKG_CONFIG_PATH": str(library.parent / "pkgconfig")}
            flags = run("pkg-config", "--cflags", "--libs", "kxstr", env=packages).split()
            version = run("pkg-config", "--modversion", "kxstr", env=packages).strip()
            run(args.cc, "-std=c99", "-pedantic", "-Wall", "-Werror", HERE / "pkgconfig_consumer.c", *flags,
                "-o", folder / "pkgconfig")
            expect(f"pkg-config, {version}", run(folder / "pkgconfig", env=environment))

        run(args.cc, "-std=c99", "-Wall", "-Werror", HERE / "plugin_host.c", "-ldl", "-o", folder / "host")
        expect("a host that loads it", run(folder / "host", library.resolve()))
        text = folder / "text"
        text.write_bytes(b"caf\x82")
        if run(prefix / "bin" / "kx", "convert", "-f", "850", "-t", "utf-8", text) != "caf\u00e9":
            raise SystemExit("the installed kx does not convert")


if __name__ == "__main__":
    main()
