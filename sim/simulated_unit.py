"""A simulated unit: starts it, talks to it, takes it down without a trace.

    from simulated_unit import start
    with start("ZAVO-ENC-U300-DA", gateway="build/models/ZAVO-ENC-U300-DA/upload_gateway") as unit:
        subprocess.run(["curl", "-F", "UnitConfUpload=@unit.json;type=application/json", unit.url])
        unit.wait_for("rebooted")
        print("\n".join(unit.journal()))

The unit lives in mount, pid and network namespaces of its own and keeps nothing outside of them: its
files are in memory and go with it, also when this process is killed. Its web server is lighttpd,
reachable on a free port of this machine's loopback, because the listening socket is opened here and
handed in. The other servers take no socket: they are reached from inside the unit only.

Start it from the main thread: the unit ends when the thread that started it does.
"""

import array
import contextlib
import os
import select
import shutil
import signal
import socket
import subprocess
import time

HERE = os.path.dirname(os.path.abspath(__file__))
MODELS = ("ZAVO-ENC-U300-DA", "ZAVO-ENC-E100-DA", "ZAVO-DEC-D200-DA")
CGI = "/www/cgi-bin/upload_gateway"

# apache passes a program's own status line on only under a name like this one.
NPH_CGI = "/www/cgi-bin/nph-upload_gateway"

# The web servers that a unit can run: "apache" is Debian's default (threads, mod_cgid), and
# "apache-prefork" is the other kind (processes, mod_cgi).
SERVERS = ("lighttpd", "busybox", "apache", "apache-prefork")

# Port of a server that is reached from inside the unit only.
INSIDE_PORT = 8080

# Seconds that a web server waits for the gateway, as docs/deployment.md has it.
SERVER_PATIENCE = 900
CLOCK = "/sim/libfast_clock.so"

# Where the gateway lies when it is built for another processor, and CGI is a script that runs it.
RUN_GATEWAY = "/sim/upload_gateway"

# Where a gateway that is built with sanitizers reports.
REPORTS = "/run/reports"
TOOL_PATH = "/unit/extra:/unit/bin:/bin"

# How much faster the gateway's clock runs. A pause of one second then takes a millisecond.
FAST = 1000


class UnitError(Exception):
    """The unit could not be started, or did not do in time what was waited for."""


def default_tools():
    """Folder of the simulator's built programs."""
    return os.path.join(os.path.dirname(HERE), "build", "sim")


def _machine(path):
    """Word size and processor of an ELF file; those of this Python for any other file."""
    with open(path, "rb") as file:
        head = file.read(20)
    return (head[4:6], head[18:20]) if head[:4] == b"\x7fELF" else _machine("/proc/self/exe")


class Unit:
    """A running unit. Made by start(); ended by stop() or at the end of a with block."""

    def __init__(self, process, control, root, processes, port, options):
        self.model = options["model"]
        self.server = options["server"]
        self.cgi_environment = options["environment"]
        # True when the web server is reached from inside the unit only: run curl there.
        self.inside = options["server"] != "lighttpd"
        self.port = port
        cgi = NPH_CGI if self.server.startswith("apache") else CGI
        self.url = f"http://127.0.0.1:{port}{cgi.removeprefix('/www')}"
        self._gateway_names = {os.path.basename(path)[:15]
                               for path in (CGI, NPH_CGI, *options["runner"][:1])}
        self._process = process
        self._control = control
        self._root = root
        self._processes = processes

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.stop()

    def stop(self):
        """Ends the unit with everything that runs in it. May be called twice."""
        if self._process is None:
            return
        self._control.close()
        try:
            self._process.wait(5)
        except subprocess.TimeoutExpired:
            self._process.kill()
            self._process.wait()
        os.close(self._root)
        self._process = None

    def running(self):
        return self._process is not None and self._process.poll() is None

    # ---- programs ----

    def spawn(self, arguments, stdin=None, stdout=None, stderr=None, environment=None):
        """Starts a program in the unit (path inside the unit). Returns a descriptor that becomes
        readable when the program has ended: hand it to exit_status()."""
        environment = {"PATH": TOOL_PATH} if environment is None else environment
        status_read, status_write = os.pipe()
        text = "\0".join([str(len(arguments)), *arguments,
                          *(f"{key}={value}" for key, value in environment.items())]) + "\0"
        with open(os.devnull, "r+b", buffering=0) as null:
            given = [null.fileno() if one is None else one for one in (stdin, stdout, stderr)]
            rights = array.array("i", [*given, status_write])
            self._control.sendmsg(
                [os.fsencode(text)], [(socket.SOL_SOCKET, socket.SCM_RIGHTS, rights)])
        os.close(status_write)
        return status_read

    @staticmethod
    def exit_status(descriptor, timeout=30):
        """Waits for a spawned program: its exit status, or minus the signal that ended it."""
        readable, _, _ = select.select([descriptor], [], [], timeout)
        text = os.read(descriptor, 32) if readable else b""
        os.close(descriptor)
        if not text:
            raise UnitError("a program in the unit did not end in time")
        return int(text)

    def run(self, arguments, stdin=None, environment=None, timeout=30):
        """Runs a program in the unit and returns (exit status, output bytes). `stdin` is bytes or a
        descriptor. The output is what was written until the program itself ended: a child that it
        left behind is not waited for."""
        with open(os.memfd_create("output"), "w+b", buffering=0) as output, \
                open(os.memfd_create("input"), "w+b", buffering=0) as given:
            if isinstance(stdin, bytes):
                given.write(stdin)
                given.seek(0)
                stdin = given.fileno()
            ended = self.spawn(arguments, stdin=stdin, stdout=output.fileno(),
                               environment=environment)
            status = self.exit_status(ended, timeout)
            output.seek(0)
            return status, output.read()

    def run_gateway(self, method="POST", body=b"", length=None, query=None, **options):
        """Runs the gateway without a web server. `length` is the CONTENT_LENGTH text (default: the
        body's; False: not set). `body` may be a descriptor. Returns (exit status, output bytes)."""
        environment = dict(self.cgi_environment)
        if method is not None:
            environment["REQUEST_METHOD"] = method
        if length is None and isinstance(body, bytes):
            length = len(body)
        if length is not None and length is not False:
            environment["CONTENT_LENGTH"] = str(length)
        if query is not None:
            environment["QUERY_STRING"] = query
        return self.run([CGI], stdin=body, environment=environment, **options)

    def _own(self, *arguments, timeout=30):
        status, output = self.run(["/sim/unit_tool", *arguments], timeout=timeout)
        return status, output

    def gateway_pids(self):
        """The gateway processes that run now, as this machine numbers them."""
        return self.pids(*self._gateway_names)

    def pids(self, *wanted):
        """Processes in the unit with one of these command names, as this machine numbers them."""
        found = []
        for pid in filter(str.isdigit, os.listdir("/proc")):
            with contextlib.suppress(OSError):
                with open(f"/proc/{pid}/comm", encoding="utf-8", errors="replace") as name:
                    if name.read().rstrip("\n") not in wanted:
                        continue
                if os.readlink(f"/proc/{pid}/ns/pid") == self._processes:
                    found.append(int(pid))
        return found

    # ---- journal ----

    def journal(self, *kinds):
        """The journal's entries so far, in order; with arguments only those of the given kinds. Waits
        until everything that was written to the serial line has arrived."""
        self._own("sim_settle")
        return self.peek(*kinds)

    def peek(self, *kinds):
        """The journal as it stands, without waiting for anything."""
        entries = self.read("/run/sim/journal").decode().split("\n")[:-1]
        return [entry for entry in entries if not kinds or entry.split(" ")[0] in kinds]

    def wait_for(self, entry, timeout=30):
        """Waits until the journal holds this very entry."""
        end = time.monotonic() + timeout
        while entry not in self.peek():
            if time.monotonic() > end:
                raise UnitError(f"no entry {entry!r} within {timeout} s; the last ones are:\n"
                                + "\n".join(self.peek()[-10:]))
            time.sleep(0.005)

    def rebooted(self):
        return "rebooted" in self.peek()

    def reset(self):
        """A factory-fresh unit: initial parameters, no stored files, an empty journal."""
        status, output = self._own("sim_reset", "/sim/params")
        if status != 0:
            raise UnitError(f"reset failed: {output!r}")

    # ---- parameters ----

    def parameter(self, key, store="rw"):
        """A parameter's value, None when it is not defined. Stores: rw (astparam), live (lmparam)."""
        status, output = self._own("sim_param", "get", store, key)
        return output.decode() if status == 0 else None

    def set_parameter(self, key, value, store="rw"):
        """Sets a parameter; None takes it out of the store."""
        if value is None:
            self._own("sim_param", "unset", store, key)
        else:
            self._own("sim_param", "set", store, key, value)

    # ---- files ----

    def _open(self, path, flags, mode=0o666):
        return os.open(path.lstrip("/"), flags, mode, dir_fd=self._root)

    def read(self, path):
        """A file's bytes."""
        with open(self._open(path, os.O_RDONLY), "rb") as file:
            return file.read()

    def write(self, path, content, mode=0o666):
        """Puts a file into the unit; no journal entry comes of it."""
        with open(self._open(path, os.O_WRONLY | os.O_CREAT | os.O_TRUNC, mode), "wb") as file:
            file.write(content)
            os.fchmod(file.fileno(), mode)
        self._own("sim_note")

    def exists(self, path):
        try:
            os.stat(path.lstrip("/"), dir_fd=self._root)
            return True
        except FileNotFoundError:
            return False

    def files(self, folder):
        """Names in a folder."""
        descriptor = self._open(folder, os.O_RDONLY | os.O_DIRECTORY)
        try:
            return sorted(os.listdir(descriptor))
        finally:
            os.close(descriptor)

    def stored_files(self):
        """All files that a gateway may have stored: path -> bytes."""
        return {f"{folder}/{name}": self.read(f"{folder}/{name}")
                for folder in ("/user_data2", "/share", "/var/tmp", "/dev/shm")
                for name in self.files(folder)}

    # ---- the unit's surroundings ----

    def set_mcu(self, mode="normal", answer_ms=0):
        """How the microcontroller answers from now on: normal, slow (normal, after answer_ms),
        silent, absent (nothing listens), split (in pieces) or hangup (closes instead)."""
        if mode not in ("normal", "slow", "silent", "absent", "split", "hangup"):
            raise ValueError(mode)
        self._own("sim_mcu", f"mode {'normal' if mode == 'slow' else mode} {answer_ms}")

    def put_tool(self, name, text):
        """Puts a program of the caller's on the unit's PATH, before the appliance's tools (but
        BusyBox's applets come first). A script begins with "#!/bin/busybox sh": /bin/sh journals."""
        self.write(f"/unit/extra/{name}", text.encode() if isinstance(text, str) else text, 0o777)

    @contextlib.contextmanager
    def held(self, call):
        """While the block runs, a tool whose call begins with this text (as the journal shows it)
        waits after its entry."""
        self.write("/run/sim/hold", call.encode())
        try:
            yield
        finally:
            os.unlink("run/sim/hold", dir_fd=self._root)


def _sandbox(options):
    """The command that makes the unit's namespaces and its empty file system."""
    command = ["bwrap", "--unshare-net", "--unshare-pid", "--unshare-ipc", "--unshare-uts",
               "--die-with-parent", "--new-session", "--clearenv",
               "--ro-bind", "/usr", "/usr"]
    if options["server"].startswith("apache"):
        # It does not serve as root.
        command += ["--unshare-user", "--uid", "1000", "--gid", "1000"]
    for folder in ("lib", "lib32", "lib64", "libx32"):
        if os.path.islink(f"/{folder}"):
            command += ["--symlink", os.readlink(f"/{folder}"), f"/{folder}"]
        elif os.path.isdir(f"/{folder}"):
            command += ["--ro-bind", f"/{folder}", f"/{folder}"]
    command += ["--proc", "/proc", "--dev", "/dev", "--tmpfs", "/tmp"]
    if options["user_data_bytes"]:
        command += ["--size", str(options["user_data_bytes"])]
    command += ["--tmpfs", "/user_data2"]
    for folder in ("/share", "/var/tmp", "/dev/shm", "/sys/devices/platform/videoip", "/run/sim",
                   "/unit/bin", "/unit/extra", "/bin", "/www/uploads", "/www/cgi-bin"):
        command += ["--dir", folder]
    for path, inside in (
            (options["busybox"], "/bin/busybox"),
            (options["unit_tool"], "/sim/unit_tool"),
            (os.path.join(HERE, f"unit.{options['model']}.params"), "/sim/params"),
            (os.path.join(HERE, "lighttpd.conf"), "/sim/lighttpd.conf"),
            (os.path.join(HERE, "apache.conf"), "/sim/apache.conf"),
            *([(options["fast_clock"], CLOCK)] if options["fast_clock"] else []),
            (options["gateway"], RUN_GATEWAY if options["runner"] else CGI)):
        if not os.path.isfile(path):
            raise UnitError(f"{path} is missing")
        command += ["--ro-bind", os.path.realpath(path), inside]
    command += ["--symlink", os.path.basename(CGI), NPH_CGI]
    if options["reports"]:
        command += ["--bind", os.path.realpath(options["reports"]), REPORTS]
    return command


def _cgi_environment(options):
    """What the gateway finds in its environment, besides what the web server puts there."""
    libraries = list(options["preload"])
    if options["fast_clock"] is not None:
        if _machine(options["fast_clock"]) != _machine(options["gateway"]):
            raise UnitError(f"{options['fast_clock']} is built for another processor than "
                            f"{options['gateway']}")
        libraries.append(CLOCK)
    # The gateway's standard error goes nowhere: a sanitizer has to write to a file. The one for
    # undefined behaviour does not, but it can abort, which the other one reports; and what it is told
    # of the file holds for both.
    log = f":log_path={REPORTS}/report" if options["reports"] else ""
    return {
        "PATH": TOOL_PATH,
        "LD_PRELOAD": ":".join(libraries),
        "FAST_CLOCK_SPEED": str(FAST),
        # A preloaded library stands before the sanitizer's own, which would refuse that. What the
        # gateway holds when it ends is no leak: it serves one request and leaves the rest to exit.
        "ASAN_OPTIONS": "verify_asan_link_order=0:detect_leaks=0:handle_abort=1" + log,
        "UBSAN_OPTIONS": "abort_on_error=1" + log,
    }


def _server_command(options):
    """How the unit's web server is started; what it needs beside its configuration is in the
    environment (UNIT_*)."""
    if options["server"] == "lighttpd":
        return ["/usr/sbin/lighttpd", "-D", "-f", "/sim/lighttpd.conf"]
    if options["server"] == "busybox":
        # It hands its own environment on, and as a static program takes no preloaded library.
        return ["/bin/busybox", "env", *(f"{key}={value}" for key, value
                                         in options["environment"].items()),
                "/bin/busybox", "httpd", "-f", "-p", f"127.0.0.1:{INSIDE_PORT}", "-h", "/www"]
    return ["/usr/sbin/apache2", "-DFOREGROUND", "-f", "/sim/apache.conf",
            *(["-DPREFORK"] if options["server"] == "apache-prefork" else [])]


def _programs_that_are_needed(options):
    server = _server_command(options)[0]
    return ["bwrap", "busybox", *([] if server.startswith("/bin/") else [server]),
            *options["runner"][:1]]


def _open_listener(port):
    listener = socket.socket()
    listener.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
    listener.bind(("127.0.0.1", port))
    listener.listen(128)
    return listener


def start(model, gateway, tools=None, real_time=False, port=0, user_data_bytes=0, preload=(),
          fast_clock=None, server="lighttpd", patience=SERVER_PATIENCE, runner=(), reports=None):
    """Starts a unit of the given model with the given gateway program and returns it when it is up.

    tools: folder with the built unit_tool and libfast_clock.so.
    real_time: the gateway's pauses take as long as on the appliance, not a thousandth of it.
    port: port of this machine's loopback for the web server; 0 takes a free one (lighttpd only).
    user_data_bytes: size of /user_data2; 0 is no limit.
    preload: libraries to preload into the gateway only (before the clock).
    fast_clock: the clock's library, where the gateway is built for another processor than `tools`.
    server: one of SERVERS.
    patience: seconds that the web server waits for the gateway.
    runner: command that runs the gateway, where it is built for another processor than this one.
    reports: folder of this machine that gets the reports of a gateway built with sanitizers.
    """
    tools = os.path.realpath(tools or default_tools())
    options = {
        "model": model, "gateway": os.fspath(gateway), "busybox": shutil.which("busybox"),
        "unit_tool": os.path.join(tools, "unit_tool"), "user_data_bytes": user_data_bytes,
        "fast_clock": None if real_time else os.path.realpath(
            fast_clock or os.path.join(tools, "libfast_clock.so")),
        "preload": preload, "server": server, "runner": list(runner), "reports": reports}
    if server not in SERVERS:
        raise ValueError(server)
    for program in _programs_that_are_needed({**options, "environment": {}}):
        if shutil.which(program) is None:
            raise UnitError(f"{program} is missing: scripts/test installs what the unit needs")
    command = _sandbox(options)
    environment = options["environment"] = _cgi_environment(options)
    ours, theirs = socket.socketpair(socket.AF_UNIX, socket.SOCK_SEQPACKET)
    listener = _open_listener(port) if server == "lighttpd" else None
    port = listener.getsockname()[1] if listener else INSIDE_PORT
    with theirs, listener or contextlib.nullcontext():
        settings = {"UNIT_PORT": str(port), "UNIT_PATIENCE": str(patience), "PATH": TOOL_PATH,
                    **{f"UNIT_CGI_{key.removeprefix('LD_')}": value
                       for key, value in environment.items()}}
        for key, value in settings.items():
            command += ["--setenv", key, value]
        handed = [theirs.fileno(), *([listener.fileno()] if listener else [])]
        command += ["--", "/sim/unit_tool", "unit_init", "/sim/params", str(theirs.fileno()),
                    str(listener.fileno() if listener else -1), str(port),
                    *_server_command(options)]
        process = subprocess.Popen(command, stdin=subprocess.DEVNULL, pass_fds=handed)
        theirs.close()
        ours.settimeout(20)
        try:
            processes, descriptors, _, _ = socket.recv_fds(ours, 64, 1)
        except OSError:
            processes, descriptors = b"", []
        if not processes or not descriptors:
            process.kill()
            process.wait()
            raise UnitError("the unit did not start")
        ours.settimeout(None)
        os.set_inheritable(descriptors[0], False)
        unit = Unit(process, ours, descriptors[0], processes.decode(), port, options)
    if runner:
        unit.write(CGI, f"#!/bin/busybox sh\nexec {' '.join(runner)} {RUN_GATEWAY}\n".encode(), 0o777)
    return unit


def stop_on_signals():
    """Makes SIGTERM and SIGHUP end this program as Ctrl-C does, through its with blocks."""
    def leave(number, _):
        raise SystemExit(128 + number)
    signal.signal(signal.SIGTERM, leave)
    signal.signal(signal.SIGHUP, leave)
