"""The cheapest unit that the gateway can be run in: file system and network of its own, BusyBox as
the shell, one static program as every tool of the appliance. Nothing on the host is changed.

bench.py starts itself again inside of it (enter), and from there starts what listens (start_unit)."""

import glob
import os
import shutil
import subprocess
import time

from effects import REPOSITORY


TOOLS = ("astparam", "lmparam", "e", "dapi", "crypto_program", "node_query", "change_serial",
         "init_send_oled", "mqtt_upgrade_cert.sh", "https_upgrade_cert.sh", "ldap_upgrade_cert.sh",
         "update_1x_cert_upload_conf.sh")
TOOL_PATH = "/unit/bin:/bin"
INSIDE = "BENCH_INSIDE"


def enter(script, arguments, results):
    """Runs the Python script inside the sandbox and returns its exit status. The repository is read
    only there; what is written into /results comes back in the folder `results`."""
    os.makedirs(results, exist_ok=True)
    command = ["bwrap", "--unshare-net", "--unshare-pid", "--unshare-ipc", "--die-with-parent",
               "--ro-bind", "/usr", "/usr", "--ro-bind", "/etc/ld.so.cache", "/etc/ld.so.cache"]
    for folder in ("lib", "lib32", "lib64", "libx32"):
        if os.path.islink(f"/{folder}"):
            command += ["--symlink", os.readlink(f"/{folder}"), f"/{folder}"]
        elif os.path.isdir(f"/{folder}"):
            command += ["--ro-bind", f"/{folder}", f"/{folder}"]
    command += ["--proc", "/proc", "--dev", "/dev", "--tmpfs", "/tmp"]
    for folder in ("/user_data2", "/share", "/var/tmp", "/unit/bin", "/bin",
                   "/sys/devices/platform/videoip"):
        command += ["--dir", folder]
    command += ["--ro-bind", shutil.which("busybox"), "/bin/busybox",
                "--ro-bind", REPOSITORY, "/repository", "--bind", results, "/results",
                "--setenv", INSIDE, "1", "--chdir", "/tmp", "--",
                "/usr/bin/python3", "-B", f"/repository/{os.path.relpath(script, REPOSITORY)}", *arguments]
    return subprocess.run(command, check=False).returncode


def is_inside():
    return os.environ.get(INSIDE) == "1"


def start_unit(program):
    """Makes the tools and starts what listens; ends with this process."""
    subprocess.run(["/bin/busybox", "--install", "-s", "/bin"], check=True)
    for tool in TOOLS:
        os.symlink(program, f"/unit/bin/{tool}")
    os.symlink(program, "/unit/bench_unit")
    os.mkfifo("/dev/ttyS1")
    unit = subprocess.Popen(["/unit/bench_unit", "/tmp/ready"])
    for _ in range(1000):
        if os.path.exists("/tmp/ready"):
            return unit
        time.sleep(0.005)
    raise RuntimeError("the unit does not listen")


def write_dumps(run_time, live):
    """The two dumps that snapshots of the present values are taken from."""
    with open("/dev/shm/rwparam", "wb") as file:
        file.write(b"\1\2\3\4" + b"".join(entry.encode() + b"\0" for entry in run_time) + b"\0")
    with open("/var/tmp/lmparam_dump", "wb") as file:
        file.write(b"".join(entry.encode() + b"\n" for entry in live))


def faketime_library():
    found = glob.glob(f"/usr/lib/{os.uname().machine}-linux-gnu*/faketime/libfaketime.so.1")
    return found[0]
