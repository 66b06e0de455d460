# SPDX-License-Identifier: GPL-3.0-or-later
"""Child processes that never outlive the script that started them."""

import ctypes
import os
import signal
import subprocess
import sys
import time
from contextlib import contextmanager
from pathlib import Path

PR_SET_PDEATHSIG = 1
PR_SET_CHILD_SUBREAPER = 36
PATIENCE = 90  # s; long enough for a busy computer, since it only ends waits for what will never come
_libc = ctypes.CDLL(None)


def start(command, **options):
    """Starts a command that gets SIGTERM when this process ends, for whatever reason."""
    options.setdefault("stdin", subprocess.DEVNULL)
    return subprocess.Popen(command, preexec_fn=lambda: _libc.prctl(PR_SET_PDEATHSIG, signal.SIGTERM), **options)


def stop(process, patience=5):
    """Ends one process, by force if it does not end within `patience` seconds."""
    if process.poll() is not None:
        return
    process.terminate()
    try:
        process.wait(patience)
    except subprocess.TimeoutExpired:
        process.kill()
        process.wait()


@contextmanager
def started(command, **options):
    """A command that runs inside the `with` block."""
    process = start(command, **options)
    try:
        yield process
    finally:
        stop(process)


@contextmanager
def all_ended_afterwards():
    """Ends every descendant on the way out: session buses start helpers of their own. Also on Ctrl+C and SIGTERM."""
    _libc.prctl(PR_SET_CHILD_SUBREAPER, 1)
    for number in (signal.SIGTERM, signal.SIGHUP):
        signal.signal(number, lambda signum, _frame: sys.exit(128 + signum))
    try:
        yield
    finally:
        for number in (signal.SIGTERM, signal.SIGKILL):
            _end_children(number)


def _children():
    return [int(pid) for task in Path("/proc/self/task").iterdir() for pid in (task / "children").read_text().split()]


def _end_children(number, patience=3):
    # A child's own children become ours when it ends, so this goes on until none is left.
    deadline = time.monotonic() + patience
    while (pids := _children()) and time.monotonic() < deadline:
        for pid in pids:
            os.kill(pid, number)
        time.sleep(0.05)
        _reap(pids)


def _reap(pids):
    for pid in pids:
        try:
            os.waitpid(pid, os.WNOHANG)
        except ChildProcessError:
            pass


def wait_until(condition, what, seconds=PATIENCE, process=None, pause=0.05):
    """The condition's first true result. Fails with `what` when there is none in time, or when `process` has ended."""
    deadline = time.monotonic() + seconds
    while not (result := condition()):
        if process is not None and process.poll() is not None:
            raise RuntimeError(f"{process.args[0]} ended with {process.returncode} while waiting for: {what}")
        if time.monotonic() > deadline:
            raise TimeoutError(f"waited {seconds} s in vain for: {what}")
        time.sleep(pause)
    return result
