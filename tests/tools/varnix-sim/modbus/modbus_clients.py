#!/usr/bin/env python3
"""Drives `varnix-sim run --modbus` with clients nobody here wrote: python3-pymodbus and mbpoll.

    modbus_clients.py --sim PATH --root SOURCE_DIR SCENARIO

Each scenario starts the simulator on a free loopback port (--modbus 127.0.0.1:0, the port is read
from its notice), runs the clients against it, then stops it with SIGTERM and checks that it exits
with status 0 and prints its summary. The whole script is bounded by an alarm; the simulator is
killed whatever happens. Exits 77 (skipped) when the scenario's client is not installed.
"""
import argparse
import csv
import io
import os
import queue
import re
import shutil
import signal
import struct
import subprocess
import sys
import threading
import time

SKIP = 77
LIMIT_SECONDS = 90


def fail(message):
    print(f"FAIL: {message}", file=sys.stderr)
    sys.exit(1)


def check(condition, message):
    if not condition:
        fail(message)


class Simulator:
    """The simulator serving one document; a context manager that always stops it."""

    def __init__(self, sim, document, extra=()):
        self.command = [sim, "run", document, "--modbus", "127.0.0.1:0", "--cycles", "0", "--real-time",
                        "--cycle-time", "10ms", "--no-trace", *extra]
        self.lines = queue.Queue()
        self.stderr = []

    def __enter__(self):
        self.process = subprocess.Popen(self.command, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True)
        threading.Thread(target=self._read, daemon=True).start()
        deadline = time.monotonic() + 20
        while time.monotonic() < deadline:
            try:
                line = self.lines.get(timeout=0.5)
            except queue.Empty:
                if self.process.poll() is not None:
                    break
                continue
            found = re.search(r"serving Modbus TCP on 127\.0\.0\.1:(\d+) ", line)
            if found:
                self.port = int(found.group(1))
                return self
        self._kill()
        fail(f"the simulator did not start serving: {''.join(self.stderr)}")

    def _read(self):
        for line in self.process.stderr:
            self.stderr.append(line)
            self.lines.put(line)

    def _kill(self):
        if self.process.poll() is None:
            self.process.kill()
            self.process.wait(timeout=10)

    def stop(self):
        """SIGTERM: the run ends after its cycle, prints the summary and exits 0."""
        self.process.send_signal(signal.SIGTERM)
        try:
            status = self.process.wait(timeout=10)
        except subprocess.TimeoutExpired:
            self._kill()
            fail("the simulator did not stop within 10 s of SIGTERM")
        time.sleep(0.1)
        text = "".join(self.stderr)
        check(status == 0, f"exit status {status} after SIGTERM:\n{text}")
        check(re.search(r"^\d+ cycles, \d+ ports", text, re.M), f"no summary:\n{text}")
        check(re.search(r"^real time: \d+ cycles of 10000 us, \d+ overruns; lateness", text, re.M),
              f"no real-time report:\n{text}")
        found = re.search(r"^modbus: (\d+) requests \((\d+) exception answers", text, re.M)
        check(found, f"no Modbus line in the summary:\n{text}")
        return int(found.group(1)), int(found.group(2)), text

    def __exit__(self, *exc):
        self._kill()
        return False


def address_map(sim, document):
    """The map as `varnix-sim map --format csv` prints it: name -> (table, start, count, type, access)."""
    out = subprocess.run([sim, "map", document, "--format", "csv"], capture_output=True, text=True, timeout=30)
    check(out.returncode == 0, f"map failed: {out.stderr}")
    rows = list(csv.DictReader(io.StringIO(out.stdout)))
    return {row["name"]: row for row in rows}


def pymodbus_client(port):
    try:
        from pymodbus.client import ModbusTcpClient
    except ImportError as error:
        print(f"SKIP: python3-pymodbus is not usable ({error}); scripts/setup installs it", file=sys.stderr)
        sys.exit(SKIP)
    client = ModbusTcpClient("127.0.0.1", port=port, timeout=3)
    check(client.connect(), "pymodbus could not connect")
    return client


def registers_to(fmt, registers):
    return struct.unpack(">" + fmt, struct.pack(f">{len(registers)}H", *registers))[0]


def to_registers(fmt, value):
    raw = struct.pack(">" + fmt, value)
    return list(struct.unpack(f">{len(raw) // 2}H", raw))


def read_input(client, start, count):
    response = client.read_input_registers(start, count, slave=1)
    check(not response.isError(), f"read of input registers {start}+{count}: {response}")
    return response.registers


def wait_for(predicate, what, seconds=3.0):
    deadline = time.monotonic() + seconds
    while time.monotonic() < deadline:
        if predicate():
            return
        time.sleep(0.01)
    fail(f"timed out waiting for {what}")


# --- scenarios ------------------------------------------------------------------------------------

def tank_pymodbus(args):
    document = os.path.join(args.root, "examples/tank/TankProgram.prog.config")
    items = address_map(args.sim, document)
    raw = int(items["raw"]["start"])
    level = int(items["level"]["start"])
    state = int(items["level.Quality.State"]["start"])
    flags = int(items["level.Quality.Flags"]["start"])
    display = int(items["display"]["start"])
    with Simulator(args.sim, document) as sim:
        client = pymodbus_client(sim.port)
        check(not client.write_register(raw, 2500, slave=1).isError(), "write of raw")
        wait_for(lambda: registers_to("d", read_input(client, level, 4)) == 25.0, "level 25.0")
        check(read_input(client, state, 1) == [1], "level's quality is Good (1)")
        check(registers_to("h", read_input(client, display, 1)) == 25, "display 25")
        check(not client.write_register(raw, 0x8001, slave=1).isError(), "write of 16#8001")
        wait_for(lambda: read_input(client, state, 1) == [255], "level's quality Bad (255)")
        check(registers_to("I", read_input(client, flags, 2)) == 0x40, "Overrange (16#40) in the flags")
        check(registers_to("d", read_input(client, level, 4)) == 327.69, "the raw code is still scaled")
        check(registers_to("h", read_input(client, display, 1)) == 327, "display 327")
        client.close()
        requests, exceptions, _ = sim.stop()
        check(exceptions == 0, f"{exceptions} exception answers")


def tank_mbpoll(args):
    if shutil.which("mbpoll") is None:
        print("SKIP: mbpoll is not installed; scripts/setup installs it", file=sys.stderr)
        sys.exit(SKIP)
    document = os.path.join(args.root, "examples/tank/TankProgram.prog.config")

    def mbpoll(port, *arguments, write=()):
        out = subprocess.run(["mbpoll", "-m", "tcp", "-p", str(port), "-0", "-1", "-o", "2", *arguments, "127.0.0.1",
                              *write],
                             capture_output=True, text=True, timeout=20)
        return out.returncode, out.stdout + out.stderr

    def values(text):
        return [int(v) for v in re.findall(r"^\[\d+\]:\s+(-?\d+)", text, re.M)]

    with Simulator(args.sim, document) as sim:
        status, text = mbpoll(sim.port, "-r", "0", "-t", "4", write=["2500"])
        check(status == 0 and "Written 1 references" in text, f"mbpoll write: {text}")
        # level's value (4 registers), its quality state and flags, the display.
        wait_for(lambda: values(mbpoll(sim.port, "-t", "3", "-r", "0", "-c", "4")[1]) == [16441, 0, 0, 0],
                 "level 25.0 (16#4039 0 0 0)")
        status, text = mbpoll(sim.port, "-t", "3", "-r", "11")
        check(values(text) == [25], f"display 25: {text}")
        mbpoll(sim.port, "-r", "0", "-t", "4", write=["32769"])
        wait_for(lambda: values(mbpoll(sim.port, "-t", "3", "-r", "4", "-c", "3")[1]) == [255, 0, 64],
                 "quality Bad, flags Overrange")
        # The flags as one 32-bit integer, most significant word first (-B).
        status, text = mbpoll(sim.port, "-t", "3:int", "-B", "-r", "5")
        check(re.search(r"^\[5\]:\s+64$", text, re.M), f"flags as a 32-bit integer: {text}")
        # Outside the map: the exception is mbpoll's "Illegal data address".
        status, text = mbpoll(sim.port, "-t", "3", "-r", "12")
        check(status != 0 and "Illegal data address" in text, f"read outside the map: {text}")
        status, text = mbpoll(sim.port, "-t", "3", "-r", "11")
        check(values(text) == [327], f"display 327 after a bad request: {text}")
        requests, exceptions, _ = sim.stop()
        check(exceptions == 1, f"{exceptions} exception answers, expected 1")


NUMERIC = {
    # port type: (struct format, values)
    "int8": ("h", [-128, -1, 0, 127]),
    "uint8": ("H", [0, 200, 255]),
    "int16": ("h", [-32768, -2, 32767]),
    "uint16": ("H", [0, 40000, 65535]),
    "int32": ("i", [-2147483648, -70000, 2147483647]),
    "uint32": ("I", [0, 3000000000, 4294967295]),
    "int64": ("q", [-9223372036854775808, -5000000000, 9223372036854775807]),
    "uint64": ("Q", [0, 12345678901234567890, 18446744073709551615]),
    "float32": ("f", [-1.5, 3.25e10, 0.0]),
    "float64": ("d", [-1.0 / 3.0, 1e300, 25.0]),
}


def types_pymodbus(args):
    document = os.path.join(args.root, "tests/tools/varnix-sim/documents/modbus-types.prog.config")
    items = address_map(args.sim, document)
    for order in ("big", "little"):
        with Simulator(args.sim, document, ["--word-order", order]) as sim:
            client = pymodbus_client(sim.port)
            for port_type, (fmt, samples) in NUMERIC.items():
                write_at = int(items["in_" + port_type]["start"])
                read_at = int(items["out_" + port_type]["start"])
                count = int(items["in_" + port_type]["count"])
                for value in samples:
                    registers = to_registers(fmt, value)
                    check(len(registers) == count, f"{port_type} takes {count} registers in the map")
                    if order == "little":
                        registers = registers[::-1]
                    response = client.write_registers(write_at, registers, slave=1)
                    check(not response.isError(), f"{port_type} {value}: write {registers}: {response}")

                    def arrived():
                        back = read_input(client, read_at, count)
                        if order == "little":
                            back = back[::-1]
                        got = registers_to(fmt, back)
                        return got == value or (fmt == "f" and abs(got - value) <= abs(value) * 1e-7)

                    wait_for(arrived, f"{port_type} {value} through the copy connector ({order} word order)")
            # bool through a coil to a discrete input.
            for value in (True, False, True):
                check(not client.write_coil(int(items["in_boolean"]["start"]), value, slave=1).isError(), "coil")
                wait_for(lambda: client.read_discrete_inputs(int(items["out_boolean"]["start"]), 1,
                                                             slave=1).bits[0] == value, f"bool {value}")
            client.close()
            requests, exceptions, _ = sim.stop()
            check(exceptions == 0, f"{exceptions} exception answers ({order})")


def eight_clients(args):
    """8 clients at once for a few seconds: each writes its own 32-bit value with both words equal
    (16#00010001 * n) and reads every client's copy; a torn value (words from two cycles) or a value
    that goes backwards fails."""
    document = os.path.join(args.root, "tests/tools/varnix-sim/documents/modbus-types.prog.config")
    items = address_map(args.sim, document)
    first_w, first_r = int(items["w0"]["start"]), int(items["r0"]["start"])
    errors = []
    counts = [0] * 8
    with Simulator(args.sim, document) as sim:
        def run(k):
            try:
                client = pymodbus_client(sim.port)
                last = [0] * 8
                deadline = time.monotonic() + 4
                n = 0
                while time.monotonic() < deadline and not errors:
                    n = (n + 1) % 0x8000
                    response = client.write_registers(first_w + 2 * k, [n, n], slave=1)
                    if response.isError():
                        errors.append(f"client {k}: write: {response}")
                        return
                    registers = read_input(client, first_r, 16)
                    for j in range(8):
                        high, low = registers[2 * j], registers[2 * j + 1]
                        if high != low:
                            errors.append(f"client {k}: r{j} torn: {high:#x} {low:#x}")
                            return
                        if high < last[j] and not (j == k and high == 0):
                            # values only grow (until a writer wraps, which 4 s never reach)
                            errors.append(f"client {k}: r{j} went back from {last[j]} to {high}")
                            return
                        last[j] = high
                    counts[k] += 1
                client.close()
            except SystemExit:
                errors.append(f"client {k} failed")
            except Exception as error:  # noqa: BLE001 - any failure of a client fails the test
                errors.append(f"client {k}: {error!r}")

        threads = [threading.Thread(target=run, args=(k,)) for k in range(8)]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join(timeout=30)
        check(not any(thread.is_alive() for thread in threads), "a client hung")
        check(not errors, "; ".join(errors))
        check(all(c > 10 for c in counts), f"every client was served many times: {counts}")
        requests, exceptions, text = sim.stop()
        check(exceptions == 0, f"{exceptions} exception answers")
        check(requests >= 2 * sum(counts), f"{requests} requests counted for {counts}")
        print(f"8 clients: {sum(counts)} write+read rounds in 4 s: {counts}")


def bad_inputs(args):
    """Each bad input, then a good request still answered."""
    import socket
    document = os.path.join(args.root, "examples/tank/TankProgram.prog.config")
    with Simulator(args.sim, document) as sim:
        client = pymodbus_client(sim.port)

        def good():
            check(len(read_input(client, 0, 12)) == 12, "a good request after a bad one")

        def exception_code(response):
            check(response.isError(), f"no exception: {response}")
            return response.exception_code

        check(exception_code(client.read_input_registers(12, 1, slave=1)) == 2, "outside the map: illegal address")
        good()
        check(exception_code(client.write_register(1, 5, slave=1)) == 2, "write outside the holding registers")
        good()
        check(exception_code(client.read_holding_registers(0, 2, slave=1)) == 2, "read past the last register")
        good()

        def raw(frame, answer_expected=True):
            s = socket.create_connection(("127.0.0.1", sim.port), timeout=3)
            s.sendall(frame)
            try:
                data = s.recv(260)
            except (ConnectionResetError, socket.timeout):
                data = b""
            s.close()
            return data

        def pdu(function_and_data, unit=1):
            return struct.pack(">HHHB", 7, 0, len(function_and_data) + 1, unit) + function_and_data

        answer = raw(pdu(bytes([0x04, 0, 0, 0, 126])))
        check(answer[7:9] == bytes([0x84, 3]), f"count 126: illegal data value, got {answer!r}")
        good()
        answer = raw(pdu(bytes([0x01, 0, 0, 0x07, 0xD1])))
        check(answer[7:9] == bytes([0x81, 3]), f"2001 coils: illegal data value, got {answer!r}")
        good()
        answer = raw(pdu(bytes([0x10, 0, 0, 0, 1, 4, 0, 1, 0, 2])))
        check(answer[7:9] == bytes([0x90, 3]), f"byte count not twice the count: illegal data value, got {answer!r}")
        good()
        answer = raw(pdu(bytes([0x41])))
        check(answer[7:9] == bytes([0xC1, 1]), f"function 16#41: illegal function, got {answer!r}")
        good()
        answer = raw(pdu(bytes([0x08, 0, 0, 0x12, 0x34])))
        check(answer[7:9] == bytes([0x88, 1]), f"diagnostics: illegal function, got {answer!r}")
        good()
        # Malformed frames: protocol id 5, a length of 0, a length beyond any frame; the server closes.
        check(raw(struct.pack(">HHHB", 1, 5, 6, 1) + bytes([3, 0, 0, 0, 1])) == b"", "protocol 5 is closed")
        check(raw(struct.pack(">HHH", 1, 0, 0)) == b"", "length 0 is closed")
        check(raw(struct.pack(">HHHB", 1, 0, 4000, 1) + bytes(20)) == b"", "length 4000 is closed")
        good()
        # Disconnects in the middle of a request.
        for cut in (1, 5, 8, 10):
            s = socket.create_connection(("127.0.0.1", sim.port), timeout=3)
            s.sendall(pdu(bytes([0x03, 0, 0, 0, 1]))[:cut])
            s.close()
        good()
        # A flood of connections beyond the limit: the extra ones are closed, the first client is
        # served throughout and afterwards.
        flood = []
        for _ in range(40):
            try:
                flood.append(socket.create_connection(("127.0.0.1", sim.port), timeout=3))
            except OSError:
                break
            good()
        refused = 0
        for s in flood:
            s.settimeout(2)
            try:
                s.sendall(pdu(bytes([0x04, 0, 0, 0, 1])))
                refused += s.recv(260) == b""
            except (ConnectionResetError, BrokenPipeError, socket.timeout):
                refused += 1
            s.close()
        check(refused >= 40 - 16, f"only {refused} of 40 extra connections were refused")
        good()
        client.close()
        requests, exceptions, text = sim.stop()
        check(exceptions == 8, f"{exceptions} exception answers, expected 8:\n{text}")
        check(re.search(r" [1-9]\d* refused", text), f"refusals in the summary:\n{text}")


def command_line(args):
    """A port in use and bad arguments: one clear line and exit status 2, before any cycle."""
    import socket
    document = os.path.join(args.root, "examples/tank/TankProgram.prog.config")
    holder = socket.socket()
    holder.bind(("127.0.0.1", 0))
    holder.listen(1)
    port = holder.getsockname()[1]

    def run(*extra):
        out = subprocess.run([args.sim, "run", document, "--cycles", "3", "--no-trace", *extra],
                             capture_output=True, text=True, timeout=30)
        return out.returncode, out.stderr

    status, text = run("--modbus", f"127.0.0.1:{port}")
    check(status == 2, f"port in use: status {status}: {text}")
    check(text == f"varnix-sim: --modbus 127.0.0.1:{port}: the port is in use by another program; choose another "
                  f"one, such as --modbus 127.0.0.1:5020\n", f"port in use: {text!r}")
    holder.close()
    for bad, message in ((["--modbus", "nowhere:80"], "expected [HOST:]PORT"),
                         (["--modbus", "70000"], "expected [HOST:]PORT"),
                         (["--modbus", "0", "--unit-id", "0"], "--unit-id 0: expected a unit id from 1 to 255"),
                         (["--modbus", "0", "--word-order", "middle"], "--word-order middle: expected big")):
        status, text = run(*bad)
        check(status == 2 and text.count("\n") == 1 and message in text, f"{bad}: status {status}: {text!r}")


SCENARIOS = {
    "command-line": command_line,
    "tank-pymodbus": tank_pymodbus,
    "tank-mbpoll": tank_mbpoll,
    "types-pymodbus": types_pymodbus,
    "eight-clients": eight_clients,
    "bad-inputs": bad_inputs,
}


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--sim", required=True)
    parser.add_argument("--root", required=True)
    parser.add_argument("scenario", choices=sorted(SCENARIOS))
    args = parser.parse_args()
    signal.signal(signal.SIGALRM, lambda *_: fail(f"the scenario ran longer than {LIMIT_SECONDS} s"))
    signal.alarm(LIMIT_SECONDS)
    SCENARIOS[args.scenario](args)
    print(f"{args.scenario}: passed")


if __name__ == "__main__":
    main()
