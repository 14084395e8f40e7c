#!/usr/bin/env python3
"""check_recipes.py PAGE MOSQUITTO ORVA_FIRE FLAME_CLIP: runs every recipe of the page that is marked so, as it stands."""
import http.server
import json
import os
import pathlib
import queue
import re
import signal
import socket
import subprocess
import sys
import tempfile
import threading

page, mosquitto, orva_fire, flame_clip = sys.argv[1:]
recipes = dict(re.findall(r"<!-- recipe: (\S+), run -->\n```sh\n(.*?)```", pathlib.Path(page).read_text(), re.S))
unused = set(recipes)
started = []
work = tempfile.TemporaryDirectory()
folder = pathlib.Path(work.name)
patience = 120  # seconds in which anything that is waited for must happen


def free_port():
    with socket.socket() as one:
        one.bind(("127.0.0.1", 0))
        return one.getsockname()[1]


class Receiver(http.server.BaseHTTPRequestHandler):
    """Writes down every call."""
    calls = []

    def do_POST(self):
        body = self.rfile.read(int(self.headers.get("Content-Length", 0)))
        self.calls.append((self.path, self.headers.get("Content-Type"), body))
        self.send_response(204)
        self.end_headers()

    def log_message(self, *_):
        pass


class Lines(threading.Thread):
    """A socket that writes down what comes, connection by connection."""
    def __init__(self):
        super().__init__(daemon=True)
        self.socket = socket.create_server(("127.0.0.1", 0))
        self.port = self.socket.getsockname()[1]
        self.texts = queue.Queue()
        self.start()

    def run(self):
        while True:
            client, _ = self.socket.accept()
            with client, client.makefile() as text:
                self.texts.put(text.read())

    def take(self):
        """Everything of connections made before this call: one more is queued behind them."""
        with socket.create_connection(("127.0.0.1", self.port)) as last:
            last.sendall(b"the last")
        return "".join(iter(lambda: self.texts.get(timeout=patience), "the last"))


def start(name):
    unused.discard(name)
    started.append(subprocess.Popen(["bash", "-euo", "pipefail", "-c", recipes[name]], cwd=folder, env=environment, text=True,
                            stdout=subprocess.PIPE, stderr=subprocess.PIPE, start_new_session=True))
    return started[-1]


def run(name, *codes):
    process = start(name)
    output, errors = process.communicate(timeout=patience)
    assert process.returncode in codes, (name, process.returncode, output, errors)
    assert "warning" not in errors, (name, errors)
    return output


def read_until(process, words):
    text = ""
    while words not in text:
        line = process.stdout.readline()
        assert line, (words, text)
        text += line
    return text


def end(process):
    os.killpg(process.pid, signal.SIGTERM)
    process.communicate()


def broker():
    """Starts one; another port if somebody else was faster."""
    while True:
        port = free_port()
        config = folder / "broker.conf"
        config.write_text(f"listener {port} 127.0.0.1\nallow_anonymous true\nuser root\nlog_dest stderr\n")
        process = subprocess.Popen([mosquitto, "-c", config], stderr=subprocess.PIPE, text=True)
        for line in process.stderr:
            if " running" in line:
                # What else it says is read, so that it never waits for a reader.
                threading.Thread(target=process.stderr.read, daemon=True).start()
                return process, port


def events():
    return [json.loads(line) for line in (folder / "gate/events.jsonl").read_text().splitlines()]


tools = folder / "bin"
tools.mkdir()
(tools / "orva-fire").symlink_to(orva_fire)
subprocess.run([flame_clip, folder / "clip.mp4", "--size", "320x180", "--seconds", "8"], check=True, capture_output=True)
server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Receiver)
threading.Thread(target=server.serve_forever, daemon=True).start()
lines = Lines()
speaker, broker_port = broker()
environment = dict(os.environ, PATH=f"{tools}:{os.environ['PATH']}", SOURCE=str(folder / "clip.mp4"),
                   BROKER=f"mqtt://127.0.0.1:{broker_port}", RECORDER=f"http://127.0.0.1:{server.server_port}",
                   HOST="127.0.0.1", PORT=str(lines.port))
try:
    # Who listens is there first: what the broker keeps tells when.
    subprocess.run(["mosquitto_pub", "-L", environment["BROKER"] + "/orva-fire/x/event", "-r", "-m",
                    '{"event":"start","camera":"x","zone":"before"}'], check=True)
    hearing, fires = start("hear"), start("fires")
    read_until(hearing, "before")
    assert read_until(fires, "before") == "x: fire in before\n"
    run("tell", 10)
    heard = read_until(hearing, "availability offline")
    for words in ("gate/availability online", 'gate/event {"schema":1,"event":"start"', '"event":"end"', "gate/state"):
        assert words in heard, (words, heard)
    assert read_until(fires, "gate") == "gate: fire in picture\n"
    for process in (hearing, fires):
        end(process)
    run("forget", 0)
    topic = environment["BROKER"] + "/homeassistant/binary_sensor/orva-fire-gate/+/config"
    kept = subprocess.run(["mosquitto_sub", "-L", topic, "-C", "1", "-v"], check=True, capture_output=True, text=True)
    assert "/trouble/config" in kept.stdout, "only the sensor of trouble is left"

    run("http", 10)
    assert [json.loads(body) for _, _, body in Receiver.calls] == events()
    assert {(path, kind) for path, kind, _ in Receiver.calls} == {("/events", "application/json")}
    Receiver.calls.clear()
    run("http-script", 10)
    assert [path for path, _, _ in Receiver.calls] == ["/start?camera=gate", "/stop?camera=gate"], Receiver.calls
    assert (folder / "gate/event-0001-start.jpg").read_bytes() in Receiver.calls[0][2]
    run("socket", 10)
    assert lines.take() == "FIRE gate picture\n"
    run("socat", 10)
    assert lines.take() == (folder / "gate/events.jsonl").read_text()

    first, last = events()[0], events()[-1]
    assert run("list", 0) == f"{first['seconds']} gate picture\n"
    box = last["largest"]["box"]
    assert run("table", 0).split() == [str(value) for value in (1, last["duration"], box["x"], box["y"])]
    following = start("follow")
    # It shows what is added after it has begun, which only more lines tell.
    with (folder / "gate/events.jsonl").open("a") as file:
        def add():
            while following.poll() is None and not stop.wait(0.05):
                file.write('{"event":"start","zone":"later"}\n')
                file.flush()
        stop = threading.Event()
        adder = threading.Thread(target=add)
        adder.start()
        assert read_until(following, "later").startswith("fire in later\n")
        stop.set()
        adder.join()
    end(following)
    assert run("pipe", 10) == '["start","picture"]\n["end","picture"]\n'
finally:
    for process in started:
        if process.poll() is None:
            end(process)
    speaker.terminate()
    speaker.wait()
assert not unused, f"nobody ran {unused}"
print(f"ran {len(recipes)} recipes")
