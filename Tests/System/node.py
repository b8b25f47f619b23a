"""Packages from npm that tests use."""

import pathlib
import subprocess

ROOT = pathlib.Path(__file__).resolve().parents[2]


def packages(folder):
    """Installs what the lock file in `folder` (relative to the root of the project) names, and returns the folder.

    The JavaScript of a test runs with this folder as its working directory: Node.js looks there for its modules."""
    path = ROOT / folder
    subprocess.run([ROOT / "scripts" / "node-packages", path], check=True, timeout=600)
    return path
