"""Shows the upload gateway at work: starts a simulated unit, posts a file to it, tells what happened.

scripts/demo installs and builds what this needs and then runs it.
"""

import argparse
import errno
import json
import os
import shlex
import shutil
import subprocess
import sys
import time

sys.dont_write_bytecode = True
import simulated_unit  # noqa: E402  (no cache folder beside the sources)

REPOSITORY = os.path.dirname(simulated_unit.HERE)
SHORT_MODELS = {"u300": "ZAVO-ENC-U300-DA", "e100": "ZAVO-ENC-E100-DA", "d200": "ZAVO-DEC-D200-DA"}
FIELDS = {
    "config": "UnitConfUpload",
    "rs232": "Rs232CodeUpload",
    "ir": "IRCodeUpload",
    "triggers": "TriggerCommandsUpload",
    "video-wall": "VideoWallUpload",
    "edid": "CustomEdidFile",
    "certificates": "getCaEncryptData",
}


# The certificates and keys of the demonstrated unit; a factory-fresh one has none. What they say is
# made up, and short enough to read back from the reply: the unit's crypto_program writes base64.
CERTIFICATES = {f"/user_data2/{name}": f"made-up {name} of the demo\n".encode()
                for name in ("CAFile", "CERTFile", "KEYFile", "HTTPS_CAFILE", "ca.pem")}


def port_number(text):
    if not text.isascii() or not text.isdigit() or int(text) > 65535:
        raise argparse.ArgumentTypeError(f"{text!r} is no port: choose 0 to 65535 (0: a free one)")
    return int(text)


def read_arguments():
    parser = argparse.ArgumentParser(
        prog="scripts/demo",
        description="Starts a simulated unit with the upload gateway in it, posts a file to it and "
                    "shows what the unit was told. Nothing is left behind when it ends.",
        epilog="kinds: " + ", ".join(f"{short} ({field})" for short, field in FIELDS.items()),
        allow_abbrev=False)
    parser.add_argument("--model", default="u300",
                        help="the unit: u300, e100, d200 or a full model name (default: u300)")
    parser.add_argument("--file", help="post this file (default: the model's example configuration)")
    parser.add_argument("--kind", default=None,
                        help="what the file is, by short name or form field (default: config); "
                             "certificates asks for the stored certificates and takes no file")
    parser.add_argument("--serve", action="store_true",
                        help="leave the unit running until Ctrl-C and show what it is told")
    parser.add_argument("--port", type=port_number, default=0,
                        help="port of the unit's web server (default: 0, a free one)")
    parser.add_argument("--real-time", action="store_true",
                        help="let the gateway's pauses take as long as on the appliance")
    parser.add_argument("--raw", action="store_true",
                        help="print the journal whole and as it stands")
    parser.add_argument("--build", default=os.path.join(REPOSITORY, "build"), help=argparse.SUPPRESS)
    # Only looks at the arguments, before anything is built for them.
    parser.add_argument("--check", action="store_true", help=argparse.SUPPRESS)
    options = parser.parse_args()
    options.model = SHORT_MODELS.get(options.model.lower(), options.model)
    if options.model not in simulated_unit.MODELS:
        parser.error(f"unknown model {options.model}: choose u300, e100 or d200")
    kind = options.kind or "config"
    options.kind = FIELDS.get(kind.lower(), kind)
    if options.kind not in FIELDS.values():
        parser.error(f"unknown kind {kind}: choose one of {', '.join(FIELDS)}")
    if options.kind == "getCaEncryptData":
        if options.file:
            parser.error("certificates are asked for, not posted: no --file")
    elif options.file is None:
        if options.kind != "UnitConfUpload":
            parser.error(f"--kind {kind} needs --file (see the folder examples)")
        options.file = os.path.join(REPOSITORY, "examples",
                                    f"unit-configuration.{options.model}.json")
    if options.file and not os.path.isfile(options.file):
        parser.error(f"no such file: {options.file}")
    return options


def curl_command(url, field, path):
    if field == "getCaEncryptData":
        return ["curl", "-sS", f"{url}?name={field}"]
    # curl takes double quotes around a name that holds commas or semicolons.
    name = path.replace("\\", "\\\\").replace('"', '\\"')
    return ["curl", "-sS", "-F", f'{field}=@"{name}";type=application/json'
            if any(c in path for c in ',;"\\') else f"{field}=@{path};type=application/json", url]


def readable(entry):
    """One journal entry for a person; None for what only repeats another entry."""
    kind, _, text = entry.partition(" ")
    if kind in ("line", "mcu") and not text:
        text = "(empty)"
    if kind == "status" and text.startswith("upgradeUnitSetting:"):
        step, _, total = text.partition(":")[2].partition(",")
        return f"--- progress {step} of {total}"
    forms = {"line": "  $ {}", "script": "  $ sh < {}", "mcu": "      front panel <- {}",
             "mcu-edid": "      front panel <- EDID {}", "mcu-partial": "      front panel <- {}...",
             "status": "      status service <- {}", "rebooted": "--- the unit restarts"}
    if kind == "file":
        path, _, size = text.rpartition(" ")
        return f"      file {path}: " + ("removed" if size == "gone" else f"{size} bytes")
    if kind == "line" and "upgradeUnitSetting:" in text:
        return None
    return forms[kind].format(text) if kind in forms else None


class Teller:
    """Prints the journal as it grows."""

    def __init__(self, unit, raw):
        self.unit, self.raw, self.told = unit, raw, 0
        self.width = max(60, shutil.get_terminal_size((140, 24)).columns)

    def tell(self, entries):
        for entry in entries[self.told:]:
            text = entry if self.raw else readable(entry)
            if text is not None:
                cut = not self.raw and len(text) > self.width
                print(text[:self.width - 3] + "..." if cut else text, flush=True)
        self.told = len(entries)


def counted(number, noun):
    return f"{number} {noun}{'' if number == 1 else 's'}"


def summary(entries):
    """What the unit was told, in numbers. A script on a shell's standard input is a line too."""
    kinds = [entry.partition(" ")[0] for entry in entries]
    panel = counted(kinds.count("mcu"), "command")
    if "mcu" in entries:
        panel += f" ({entries.count('mcu')} empty)"
    edid = sum(len(bytes.fromhex(entry.split(" ")[1])) for entry in entries
               if entry.startswith("mcu-edid "))
    if edid:
        panel += f" and an EDID of {counted(edid, 'byte')}"
    return (f"The unit ran {counted(kinds.count('line') + kinds.count('script'), 'shell line')}, "
            f"its front panel got {panel}, "
            f"it {'was' if 'rebooted' in entries else 'was not'} restarted.")


def put_certificates(unit):
    for path, content in CERTIFICATES.items():
        unit.write(path, content)
    print(f"The unit holds {len(CERTIFICATES)} made-up files: {', '.join(CERTIFICATES)}.\n"
          "The reply has each as crypto_program encrypts it (here: base64), and an empty text for every\n"
          "file that is not there.\n", flush=True)


def post(unit, options, teller):
    command = curl_command(unit.url, options.kind, options.file)
    print("$ " + shlex.join(command) + "\n", flush=True)
    begun = time.monotonic()
    with subprocess.Popen(command, stdout=subprocess.PIPE) as curl:
        try:
            while curl.poll() is None:
                teller.tell(unit.peek())
                time.sleep(0.02)
        finally:
            curl.kill()
        reply = curl.stdout.read().decode(errors="replace")
    teller.tell(unit.journal())
    seconds = time.monotonic() - begun
    print(f"\nReply after {seconds:.1f} s:\n{reply or '(none)'}\n")
    print(summary(unit.journal()))
    if curl.returncode != 0:
        return 1
    try:
        document = json.loads(reply)
    except ValueError:
        return 1
    return 0 if document.get("success", True) else 1


def serve(unit, options, teller):
    print(f"The unit is at {unit.url} until Ctrl-C. From another terminal:\n")
    print("  " + shlex.join(curl_command(unit.url, options.kind, options.file)) + "\n", flush=True)
    while unit.running():
        teller.tell(unit.peek())
        time.sleep(0.05)
    print("The unit has ended by itself.", file=sys.stderr)
    return 1


def main():
    options = read_arguments()
    if options.check:
        return 0
    simulated_unit.stop_on_signals()
    if options.file:
        options.file = os.path.abspath(options.file)
    gateway = os.path.join(options.build, "models", options.model, "upload_gateway")
    tools = os.path.join(options.build, "sim")
    try:
        with simulated_unit.start(options.model, gateway, tools, real_time=options.real_time,
                                  port=options.port) as unit:
            if not options.serve:
                print(f"A simulated {options.model} is up.", flush=True)
            if options.kind == "getCaEncryptData":
                put_certificates(unit)
            teller = Teller(unit, options.raw)
            if options.serve:
                return serve(unit, options, teller)
            return post(unit, options, teller)
    except KeyboardInterrupt:
        print()
        return 0 if options.serve else 130
    except (simulated_unit.UnitError, OSError) as error:
        if isinstance(error, OSError) and (error.errno == errno.EADDRINUSE or (
                error.errno == errno.EACCES and 0 < options.port < 1024)):
            error = f"port {options.port}: {error.strerror}"
        print(f"demo: {error}", file=sys.stderr)
        return 1


if __name__ == "__main__":
    sys.exit(main())
