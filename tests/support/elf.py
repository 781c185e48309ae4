# SPDX-License-Identifier: Apache-2.0

"""What the tests of shared objects share: what binutils say of them."""

import re
import subprocess


def run(*command):
    return subprocess.run(command, capture_output=True, text=True, check=True).stdout


def symbols(*options):
    """The symbols that nm lists, without addresses and versions."""
    lines = run("nm", *options).splitlines()
    return [line.split()[-1].split("@")[0] for line in lines if line.strip()]


def relocations(path):
    """The types of the relocations, one for each; packed ones are not among them."""
    return re.findall(r"^[0-9a-f]{16} +[0-9a-f]{16} (R_\w+)", run("readelf", "-rW", path),
                      re.MULTILINE)


def functions_in(path, section):
    """The names of the functions that a section such as .init_array points to."""
    found = re.search(rf" {re.escape(section)} +\w+ +(\w+) (\w+) (\w+)", run("readelf", "-SW", path))
    if not found:
        return []
    start, offset, size = (int(number, 16) for number in found.groups())
    content = path.read_bytes()[offset:offset + size]
    names = {int(address, 16): name for address, name in
             re.findall(r"^(\w+) [tT] (\S+)$", run("nm", path), re.MULTILINE)}
    # Some linkers leave zeros in the section, and have the address in the relocation only.
    relocated = {int(at, 16): int(address, 16) for at, address in
                 re.findall(r"^(\w+) +\w+ R_\w+_RELATIVE +(\w+)$", run("readelf", "-rW", path),
                            re.MULTILINE)}
    return [names[relocated.get(start + at) or int.from_bytes(content[at:at + 8], "little")]
            for at in range(0, size, 8)]


def own_functions_in(path, section):
    """The same, without those that the compiler puts into every shared object."""
    return [name for name in functions_in(path, section)
            if name not in ("frame_dummy", "__do_global_dtors_aux")]
