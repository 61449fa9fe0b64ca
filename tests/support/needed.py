"""What a test does where a program that it needs is not installed."""

import os
import shutil
import sys

SKIPPED = 77  # what CTest is told to count as skipped


def skip(reason):
    """Ends the test: skipped, or failed where TV2_NO_SKIPS is set (make test-viewers)."""
    if os.environ.get("TV2_NO_SKIPS"):
        print(f"failed, for nothing may be skipped: {reason}")
        sys.exit(1)
    print(f"skipped: {reason} (make test-viewers installs it)")
    sys.exit(SKIPPED)


def program(*names):
    """The path of the first of the programs that is installed; else the test is skipped."""
    for name in names:
        path = shutil.which(name)
        if path:
            return path
    skip(f"{names[0]} is not installed")
