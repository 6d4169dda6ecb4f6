# SPDX-License-Identifier: MIT
"""Which files of the tree are sources. Asks the file system and not git, so that an unpacked archive is checked too."""

import os
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
SUFFIXES = {".h", ".hpp", ".inc", ".c", ".cc", ".cpp", ".m", ".mm"}

# The canaries break the rules on purpose and are checked by their own steps.
CANARIES = ROOT / "scripts" / "canaries"


def sources(root=ROOT):
    """Every source file below root, sorted; build folders, hidden folders and the canaries are left out."""
    found = []
    for folder, names, files in os.walk(root):
        here = Path(folder)
        names[:] = sorted(
            name for name in names
            if not name.startswith(".") and (here / name) != CANARIES and not (here == root and name.startswith("build"))
        )
        found += [here / name for name in files if Path(name).suffix in SUFFIXES]
    return sorted(found)
