# SPDX-License-Identifier: GPL-3.0-or-later
"""The demo's controls: how each machine is set up, how its control is simulated, and which bytes have to arrive.

Also what both demos start from: their arguments and the program's settings.
"""

import re
import shutil
import signal
import subprocess
import sys
from dataclasses import dataclass, field
from pathlib import Path

import processes

SOURCE = Path(__file__).resolve().parent.parent
SAMPLES = SOURCE / "samples"
LEADER = bytes(20)
TAPE_START, TAPE_STOP = b"\x12", b"\x14"  # DC2, DC4
XMODEM = 3  # MCFLOW
XMODEM_BLOCK = 128  # bytes
TRANSFER_PATIENCE = 240  # s, for a program
PUNCHED = "punched"  # the folder in that of the output where punched programs save themselves


@dataclass
class Control:
    name: str  # of the machine, as the window shows it
    about: str
    program: str  # in samples/
    machine: dict  # settings that differ from DEFAULTS
    options: list = field(default_factory=list)  # of cncsim
    waits_for_start: bool = False  # the control's start button is pressed when the program waits for it
    undocks: bool = False  # the send is watched in a window of its own
    punches: bool = False  # sends its program when its button is pressed, instead of receiving one
    picture: str = ""  # one taken half-way through

    @property
    def sample(self):
        return SAMPLES / self.program

    @property
    def saved_name(self):
        """The name under which its program saves itself when the control punches it."""
        return re.search(r"^(O\d+)", self.sample.read_text(), re.MULTILINE)[1] + ".nc"


CONTROLS = [
    Control("Mill 1", "Fanuc, XON/XOFF, 7 bits with even parity", "O3000-surface.nc",
            {"MCMODE": "Fanuc", "MCFLOW": 1, "MCBAUD": 19200, "MCDBPAR": 2},
            ["--type", "fanuc", "--even-parity", "--xon-xoff", "--rate", "4000"], undocks=True),
    Control("Lathe 2", "Okuma, XON/XOFF, 8 bits", "shaft.min",
            {"MCMODE": "Okuma", "MCFLOW": 1, "MCBAUD": 9600},
            ["--type", "okuma", "--xon-xoff", "--rate", "400"]),
    Control("Mill 3", "plain, start and end string, start signal", "pocket.nc",
            {"MCMODE": "Auto", "MCFLOW": 1, "MCBAUD": 4800, "MCWAIT": "true", "MCTXSOT": "37,13,10",
             "MCTXEOT": "37,13,10"},
            ["--type", "plain", "--sot", r"%\r\n", "--eot", r"%\r\n"], waits_for_start=True),
    Control("Mill 4", "XModem, last block filled up with spaces", "O2500-cam.nc",
            {"MCFLOW": XMODEM, "MCBAUD": 38400}, ["--xmodem-receive"], picture="sending-xmodem"),
    # Its program has no empty lines: of several line ends in a row Varnock keeps one.
    Control("Drill 5", "punches out, XON/XOFF, 7 bits with even parity", "O0042-bolt-circle.nc",
            {"MCFLOW": 1, "MCBAUD": 1200, "MCDBPAR": 2},
            ["--even-parity", "--xon-xoff", "--punch-rate", "100"], punches=True, picture="receiving"),
]

# A machine whose adapter is not plugged in.
UNPLUGGED = Control("Saw 6", "no adapter", "", {"MCPORT": "/dev/ttyUSB9"})

# Keys in the order in which the program writes them.
DEFAULTS = {
    "MCNAME": "", "MCMODE": "Auto", "MCPORT": "", "MCINDIR": "", "MCOUTDIR": str(SAMPLES), "MCFLOW": 0,
    "MCWAIT": "false", "MCREPEAT": "false", "MCDELAY": 10, "MCCRLF": "false", "MCBLKTIC": 10, "MCBAUD": 9600,
    "MCEIA": "false", "MCDBPAR": 0, "MCSBITS": 1, "MCTXEOB": "CRLF", "MCTXSOT": "", "MCTXEOT": "",
    "MCSTRIPCOMMENTS": "false", "MCSTRIPEMPTYLINES": "false", "MCRXEOBCHAR": "CR", "MCREQST": "SEND", "MCEXTENS": "",
    "MCRXTIMEOUT": 3, "MCTXTIMEOUT": 3, "MCNOTFOUNDMSG": "", "MCFNAMEISTXT": "false", "MCAUTOSTARTREMO": "false",
    "MCREMOENABLED": "false", "MCFADALTA1": "false", "MCREMOPFX": "", "MCSAVEPFX": "false",
}


def demo_arguments():
    """Program, cncsim and output folder from the command line; the folder is emptied."""
    program, cncsim, output = (Path(argument).resolve() for argument in sys.argv[1:4])
    shutil.rmtree(output, ignore_errors=True)
    (output / PUNCHED).mkdir(parents=True)
    return program, cncsim, output


def write_profile(folder, controls, ports, punched=None):
    """The program's settings in a profile of its own; `folder` then serves as XDG_CONFIG_HOME. What controls punch
    belongs into the folder `punched`."""
    lines = []
    for number, control in enumerate(controls, 1):
        values = DEFAULTS | {"MCNAME": control.name, "MCPORT": ports.get(control.name, "")} | control.machine
        if control.punches and punched:
            values["MCOUTDIR"] = str(punched)
        lines += [f"[CNC{number}]"] + [f"{key}={value}" for key, value in values.items()]
    text = "\n".join([*lines, "[END]", ""])
    escaped = text.replace("\\", "\\\\").replace('"', '\\"').replace("\n", "\\n")
    (folder / "Varnock").mkdir(parents=True)
    (folder / "Varnock" / "Varnock.conf").write_text(f'[General]\nVarnock="{escaped}"\n')


class Simulator:
    """One running cncsim."""

    def __init__(self, cncsim, control, folder, *options):
        stem = control.name.lower().replace(" ", "-")
        self.control = control
        self._log = folder / f"{stem}.log"
        received = folder / f"{stem}.received"
        # What has to be right at the end.
        self.result = folder / PUNCHED / control.saved_name if control.punches else received
        command = [str(cncsim), *control.options, *options, "--output", str(received)]
        if control.punches:
            command += ["--punch", str(control.sample)]
        with open(self._log, "w") as log:
            self.process = processes.start(command, stdout=log, stderr=subprocess.STDOUT)
        self.device = processes.wait_until(lambda: self._said(r"device (\S+)"), "the simulated control's device",
                                           process=self.process)[0]

    def press_button(self):
        """The button at the control: it punches out its program, or gives the start signal."""
        self.process.send_signal(signal.SIGUSR1)

    def verdicts(self):
        """What the control says about each finished program, received or punched out."""
        return self._said(r"(\d+ bytes (?:received|punched out).*)")

    def wait_until_complete(self):
        end = "punch out all of its program" if self.control.punches else "have all of its program"
        processes.wait_until(self.verdicts, f"{self.control.name} to {end}", TRANSFER_PATIENCE, self.process)

    def _said(self, pattern):
        return re.findall(pattern + r"\n", self._log.read_text())


def expected_bytes(control):
    """What must arrive, worked out from the file alone, with none of the program's own code."""
    if control.punches:
        return control.sample.read_bytes()
    machine = DEFAULTS | control.machine
    eob = machine["MCTXEOB"].replace("CR", "\r").replace("LF", "\n")
    # Every line end becomes one line feed; two in a row become one.
    text = control.sample.read_bytes().decode("latin-1").replace("\r", "\n").replace("\n\n", "\n")
    lines = text.splitlines(keepends=True)
    if machine["MCFLOW"] == XMODEM:
        return _xmodem(lines, eob)
    header, body, trailer = {"Fanuc": _fanuc, "Okuma": _okuma}.get(machine["MCMODE"], _plain)(lines, eob, machine)
    return header + body.replace("\n", eob).encode("ascii", "replace") + trailer


def _xmodem(lines, eob):
    data = "".join(lines).replace("\n", eob).encode("ascii", "replace")
    return data + b" " * (-len(data) % XMODEM_BLOCK)  # the last block is filled up


def _fanuc(lines, eob, _machine):
    # Header and trailer carry the percent signs; a line with nothing else is not sent.
    kept = [line.replace("%", "") for line in lines if "%" not in line or line.replace("%", "").strip()]
    return LEADER + b"%" + eob.encode(), "".join(kept), b"%" + eob.encode()


def _okuma(lines, _eob, _machine):
    body = re.sub("[\x00\x12\x14]", "", "".join(lines))
    return LEADER + TAPE_START + b"\x00" + LEADER, body, LEADER + TAPE_STOP + bytes(5)


def _plain(lines, _eob, machine):
    start, end = (bytes(int(code) for code in machine[key].split(",") if code) for key in ("MCTXSOT", "MCTXEOT"))
    return start, "".join(lines), end
