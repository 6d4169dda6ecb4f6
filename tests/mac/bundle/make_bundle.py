#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Builds Lexwend.app for both processors as far as that goes without a Mac, and lexwend-convert beside it.

The build makes the bundles; here they are only joined, and zipped.

make_bundle.py SOURCE BUILD

Leaves BUILD/Lexwend.zip. The product is a check and never handed out: it was linked against stub libraries.
"""
import os
import shutil
import subprocess
import sys

ARCHITECTURES = ("arm64", "x86_64")
HERE = os.path.dirname(os.path.abspath(__file__))


def run(*command, **options):
    done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, **options)
    if done.returncode != 0:
        sys.exit(f"{done.stdout}\n{' '.join(command)} failed")
    return done.stdout


def lay_out_sysroot(source, sysroot):
    shutil.rmtree(sysroot, ignore_errors=True)
    shutil.copytree(f"{source}/tests/mac/sdk", sysroot)
    shutil.copytree(f"{HERE}/shim", f"{sysroot}/shim")
    os.makedirs(f"{sysroot}/icu/include")
    os.symlink("/usr/include/unicode", f"{sysroot}/icu/include/unicode")
    run(sys.executable, f"{HERE}/make_stub_libraries.py", sysroot)


def build(source, folder, sysroot, architecture):
    # What an earlier build put into the bundle must not stand in for what this one leaves out.
    shutil.rmtree(f"{folder}/app/Lexwend.app", ignore_errors=True)
    # As a release is built, except that nothing is optimised: what is checked is what the program refers to.
    run("cmake", "-S", source, "-B", folder, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Release", "-DBUILD_TESTING=OFF",
        *(f"-DCMAKE_{language}_FLAGS_RELEASE=-O0 -DNDEBUG" for language in ("C", "CXX", "OBJCXX")),
        "-DLEXWEND_HOST=mac", "-DLEXWEND_WERROR=ON", f"-DCMAKE_TOOLCHAIN_FILE={HERE}/macos.toolchain.cmake",
        f"-DLEXWEND_MAC_ARCHITECTURE={architecture}", f"-DLEXWEND_MAC_SYSROOT={sysroot}")
    run("ninja", "-C", folder, "-j2", "lexwend", "lexwend-convert")
    return f"{folder}/app/Lexwend.app"


def main(source, target):
    source, target = os.path.abspath(source), os.path.abspath(target)
    sysroot, bundle = f"{target}/sysroot", f"{target}/Lexwend.app"
    os.makedirs(target, exist_ok=True)
    lay_out_sysroot(source, sysroot)
    built = [build(source, f"{target}/{architecture}", sysroot, architecture) for architecture in ARCHITECTURES]

    shutil.rmtree(bundle, ignore_errors=True)
    shutil.copytree(built[0], bundle, symlinks=True)
    program = f"{bundle}/Contents/MacOS/Lexwend"
    run("llvm-lipo-14", "-create", *(f"{each}/Contents/MacOS/Lexwend" for each in built), "-output", program)
    os.chmod(program, 0o755)

    archive = f"{target}/Lexwend.zip"
    if os.path.exists(archive):
        os.remove(archive)
    run("zip", "-X", "-y", "-q", "-r", archive, "Lexwend.app", cwd=target)
    print(f"{archive} is built")


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    main(sys.argv[1], sys.argv[2])
