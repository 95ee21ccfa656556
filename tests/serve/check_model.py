"""yanglint accepts what every board file gives, in every state of a line.
usage: check_model.py GFAST-LAB BOARD-FILES-FOLDER MODULES-OF-OUR-OWN
The published modules are in the folder that GFAST_YANG_MODULES names.
"""
import glob
import json
import os
import subprocess
import sys
import tempfile

from lab import Lab, need, skip, wait_for

need("yanglint")
program, boards, own = sys.argv[1:4]
published = os.environ.get("GFAST_YANG_MODULES")
if not published:
    skip("GFAST_YANG_MODULES names no folder with the published modules")
MODULES = ["bbf-fastdsl.yang", "bbf-fast.yang", "iana-if-type@2017-01-19.yang"]


def validate(document, what):
    with tempfile.NamedTemporaryFile(suffix=".json") as file:
        file.write(document)
        file.flush()
        modules = [os.path.join(published, name) for name in MODULES] + [os.path.join(own, "gfast-cli-reading.yang")]
        result = subprocess.run(
            ["yanglint", "-p", published, *modules, "-t", "data", file.name], capture_output=True, text=True
        )
        assert result.returncode == 0, f"{what}:\n{result.stderr}"


def validate_all(lab, what):
    """Every document of the lab, and the state of its lines."""
    lines = json.loads(lab.get("/data/lines.json"))["gfast-cli-reading:reading"]["line"]
    for path in ["/data/lines.json"] + [f"/data/lines/{i}.json" for i in range(len(lines))]:
        validate(lab.get(path), f"{what} {path}")
    return [line.get("state") for line in lines]


# A document that the model refuses is refused: the check can fail.
try:
    validate(b'{"ietf-interfaces:interfaces-state":{"interface":[{"name":"x","type":"nothing"}]}}', "wrong")
except AssertionError:
    pass
else:
    raise AssertionError("yanglint accepts anything")

for board in sorted(glob.glob(os.path.join(boards, "*.toml"))):
    with Lab(program, board) as lab:
        print(os.path.basename(board), validate_all(lab, board))

seen = set()
for state in ("idle", "silent", "handshake", "training", "showtime"):
    with Lab(program, f'[[device]]\nline = "{state}"\n') as lab:
        seen.update(validate_all(lab, state))
with Lab(program, "[board]\ndevices = 0\n") as lab:
    validate_all(lab, "no chip")
with Lab(program, '[[device]]\nline = "showtime"\n[[loop_event]]\nat_s = 1\ncut = true\n') as lab:
    lab.await_output("to silent")
    # A failure, with its reason, once the reading that began before it is old.
    wait_for(lambda: b"last-failure" in lab.get("/data/lines.json"), 20, "the failure")
    seen.update(validate_all(lab, "cut"))
print("states seen:", sorted(str(state) for state in seen))
assert {"idle", "silent", "showtime"} <= seen
