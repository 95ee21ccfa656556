"""A real Prometheus scrapes two labs and answers: a rate, a lost line, errored seconds; promtool checks the rules.
usage: check_prometheus.py GFAST-LAB DOCS-MONITORING
"""
import json
import os
import socket
import subprocess
import sys
import tempfile
import time
import urllib.parse
import urllib.request

from lab import Lab, need, wait_for

need("prometheus", "promtool")
program, monitoring = sys.argv[1:3]

# Errors from the 6th to the 11th second; a cut in the 6th.
ERRORS = '[[device]]\nline = "showtime"\n[[loop_event]]\nat_s = 6\nerrors = 0.2\nfor_s = 5\n'
CUT = '[[device]]\nline = "showtime"\n[[loop_event]]\nat_s = 6\ncut = true\n'

CONFIG = """
global: {{scrape_interval: 1s, evaluation_interval: 1s}}
rule_files: ["{rules}"]
scrape_configs:
  - job_name: gfast
    static_configs: [{{targets: ["{first}", "{second}"], labels: {{site: desk}}}}]
"""


def promtool(*arguments):
    subprocess.run(["promtool", *arguments], check=True, cwd=monitoring)


def free_port():
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


class Prometheus:
    def __init__(self, first, second):
        self.folder = tempfile.TemporaryDirectory()
        config = os.path.join(self.folder.name, "prometheus.yml")
        with open(config, "w") as file:
            rules = os.path.join(monitoring, "rules.yml")
            file.write(CONFIG.format(rules=rules, first=first.address, second=second.address))
        self.address = f"127.0.0.1:{free_port()}"
        self.log = open(os.path.join(self.folder.name, "log.txt"), "w")
        self.process = subprocess.Popen(
            [
                "prometheus",
                f"--config.file={config}",
                f"--storage.tsdb.path={self.folder.name}/data",
                f"--web.listen-address={self.address}",
            ],
            stdout=self.log,
            stderr=subprocess.STDOUT,
        )

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.process.kill()
        self.process.wait()
        self.log.close()
        self.folder.cleanup()

    def api(self, path):
        try:
            with urllib.request.urlopen(f"http://{self.address}/api/v1/{path}", timeout=10) as answer:
                return json.load(answer)["data"]
        except OSError:
            return None  # it is still starting

    def query(self, text):
        """The labels and the value of each series, or none."""
        data = self.api("query?query=" + urllib.parse.quote(text)) or {"result": []}
        return [(entry["metric"], float(entry["value"][1])) for entry in data["result"]]


for rules in (["check", "rules", "rules.yml"], ["test", "rules", "rules_test.yml"], ["check", "config", "prometheus.yml"]):
    promtool(*rules)

with Lab(program, ERRORS) as errors, Lab(program, CUT) as cut, Prometheus(errors, cut) as prometheus:
    targets = wait_for(
        lambda: [t for t in (prometheus.api("targets") or {"activeTargets": []})["activeTargets"] if t["health"] != "unknown"],
        30,
        "a scrape",
    )
    assert all(target["health"] == "up" for target in targets), targets

    def of(lab, metric, more=""):
        return f'{metric}{{instance="{lab.address}"{more}}}'

    # A lost line: the one that was cut, and not the other.
    lost = wait_for(lambda: prometheus.query("dsl_up == 0 and max_over_time(dsl_up[1d]) == 1"), 40, "the lost line")
    assert {labels["instance"] for labels, _ in lost} == {cut.address}, lost
    print("lost:", lost)

    # Errored seconds: about five at the ends of the line with errors.
    increase = of(errors, "increase(dsl_errored_seconds_total", ',line="0"').replace("}", "}[15m])")
    seconds = wait_for(lambda: [v for _, v in prometheus.query(increase) if v >= 3], 40, "errored seconds")
    assert max(seconds) < 20, seconds
    print("errored seconds of a quarter hour:", seconds)

    # A rate: what is carried without errors is at most the net data rate, and not much less once they are over.
    time.sleep(8)
    rate = of(errors, "rate(dsl_error_free_bits_total", ',line="0",end="subscriber"').replace("}", "}[8s])")
    ((_, carried),) = wait_for(lambda: prometheus.query(rate), 20, "a rate")
    ((_, downstream),) = prometheus.query(of(errors, "dsl_data_rate_bps", ',line="0",direction="downstream"'))
    print(f"carried {carried:.4g} bit/s of {downstream:.4g}")
    assert 0.1 * downstream < carried < 1.5 * downstream

    # How far it carries: bytes and time of a scrape, in memory samples of a line.
    samples = {v for _, v in prometheus.query("scrape_samples_scraped")}
    duration = max(v for _, v in prometheus.query("max_over_time(scrape_duration_seconds[1m])"))
    print(f"a scrape: {len(errors.get('/metrics'))} bytes, {max(samples):.0f} samples, at most {duration:.3f} s")
