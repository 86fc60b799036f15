"""The server of `aveffect studio` in bad company: server_test.py AVEFFECT"""
import http.client
import json
import os
import pathlib
import signal
import socket
import subprocess
import sys
import tempfile
import threading
import time
import unittest

PROGRAM = str(pathlib.Path(sys.argv[1]).resolve())


class Studio:
    """A running program and whoever talks to it."""

    def __init__(self, *words, scratch):
        self.process = subprocess.Popen([PROGRAM, "studio", *words, "--no-browser"], stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
                                        env=dict(os.environ, TMPDIR=scratch))
        self.address = self.process.stdout.readline().strip()
        self.port = int(self.address.split(":")[2].split("/")[0])
        self.token = self.address.split("=")[1]

    def ask(self, path, body=None, method=None, **headers):
        """Status and body; headers by their names with _ for -."""
        connection = http.client.HTTPConnection("127.0.0.1", self.port, timeout=60)
        headers = {"Cookie": f"aveffect-{self.port}={self.token}", **({"Content-Type": "application/json"} if body is not None else {}),
                   **{name.replace("_", "-"): value for name, value in headers.items()}}
        data = body if isinstance(body, (str, bytes, type(None))) else json.dumps(body)
        connection.request(method or ("GET" if body is None else "POST"), path, data, headers)
        answer = connection.getresponse()
        content = answer.read()
        connection.close()
        return answer.status, content

    def json(self, path, body=None, **more):
        status, content = self.ask(path, body, **more)
        return status, json.loads(content)

    def end(self, how=signal.SIGTERM):
        self.process.send_signal(how)
        self.process.communicate(timeout=30)
        return self.process.returncode


class Server(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.holder = tempfile.TemporaryDirectory()
        base = pathlib.Path(cls.holder.name).resolve()
        cls.inside, cls.outside, cls.scratch = base / "in", base / "out", base / "scratch"
        for folder in (cls.inside, cls.outside, cls.scratch):
            folder.mkdir()
        make = ["ffmpeg", "-v", "error", "-f", "lavfi", "-i", "testsrc2=s=64x64:r=10:d=60", "-c:v", "mpeg4"]
        subprocess.run([*make, cls.inside / "a.mp4"], check=True)
        subprocess.run([*make, "-t", "1", cls.outside / "secret.mp4"], check=True)
        (cls.inside / "link.mp4").symlink_to(cls.outside / "secret.mp4")
        (cls.inside / "way").symlink_to(cls.outside)
        (cls.inside / "bad.otio").write_text("{")
        cls.studio = Studio(str(cls.inside / "a.mp4"), scratch=str(cls.scratch))
        cls.clip = cls.studio.json("/api/start")[1]["clips"][0]["id"]

    @classmethod
    def tearDownClass(cls):
        code = cls.studio.end()
        left = list(cls.scratch.iterdir())
        cls.holder.cleanup()
        assert code == 143 and not left, (code, left)

    def frame(self, **more):
        return self.studio.ask("/api/frame", {"clip": self.clip, "at": 1, "width": 32, **more})[0]

    def test_nobody_else_is_answered(self):
        port = self.studio.port
        for status, headers in ((403, {"Cookie": ""}), (403, {"Cookie": f"aveffect-{port}={'0' * 32}"}), (421, {"Host": f"evil.example:{port}"}),
                                (421, {"Host": f"127.0.0.1.evil.example:{port}"}), (403, {"Origin": "http://evil.example"}), (403, {"Origin": "null"}),
                                (403, {"Sec_Fetch_Site": "cross-site"}), (403, {"Sec_Fetch_Site": "same-site"}), (200, {}),
                                (200, {"Origin": f"http://127.0.0.1:{port}"})):
            for path, body in (("/api/start", None), ("/api/command", {"clip": self.clip})):
                self.assertEqual(self.studio.ask(path, body, **headers)[0], status, headers)
        self.assertEqual(self.studio.ask("/?token=" + "0" * 32, Cookie="")[0], 403)
        self.assertIn(b"refresh", self.studio.ask("/?token=" + self.studio.token, Cookie="", Sec_Fetch_Site="cross-site")[1])
        self.assertEqual(self.studio.ask("/api/jobs", "{}", Content_Type="text/plain")[0], 415)
        self.assertEqual(self.studio.ask("/api/jobs", method="PUT")[0], 405)
        with socket.socket() as elsewhere:  # the loopback address alone
            elsewhere.settimeout(2)
            own = subprocess.run(["hostname", "-I"], capture_output=True, text=True).stdout.split()
            if own:
                self.assertNotEqual(elsewhere.connect_ex((own[0], port)), 0)

    def test_no_way_leads_out(self):
        out, inside = self.outside, self.inside
        tricks = [f"{out}/secret.mp4", f"{inside}/../out/secret.mp4", f"{inside}/link.mp4", f"{inside}/way/secret.mp4", "/etc/passwd", "../out/secret.mp4",
                  f"file:{out}/secret.mp4", "http://127.0.0.1:1/a.mp4", f"{inside}/a.mp4\0/../../out/secret.mp4", f"concat:{out}/secret.mp4", "/proc/self/environ"]
        for path in tricks:
            self.assertIn(self.studio.ask("/api/clips", {"path": path})[0], (400, 404), path)
            self.assertIn(self.studio.ask("/api/open", {"path": path})[0], (400, 404), path)
            for effect in (f"blur:@mask={path}", f"crossfade:EffectPropVFPath1={path}:EffectPropVFPath2={path}"):
                if "\0" not in path:
                    escaped = effect.split("=")[0] + "=" + effect.split("=", 1)[1].replace(":", "\\:") if effect.startswith("blur") else effect
                    self.assertIn(self.frame(chain={"e": [escaped]}), (400, 404), effect)
        for path in (out, f"{inside}/..", f"{inside}/way", "/", f"{inside}%2e%2e"):
            self.assertIn(self.studio.ask(f"/api/files?path={path}")[0], (400, 404), path)
        names = {entry["name"] for entry in self.studio.json(f"/api/files?path={inside}")[1]["entries"]}
        self.assertEqual(names & {"link.mp4", "way"}, set())
        for path in ("/../../etc/passwd", "/%2e%2e/%2e%2e/etc/passwd", "//etc/passwd", "/api/../studio.cpp"):
            self.assertEqual(self.studio.ask(path)[0], 404, path)
        for output in (f"{out}/o.mp4", f"{inside}/way/o.mp4", f"{inside}/../out/o.mp4", "o.mp4", f"{inside}/", f"{inside}/..", f"{inside}/no/o.mp4", f"{inside}/link.mp4",
                       "-", "/dev/stdout", f"{inside}/%d.png"):
            body = {"clip": self.clip, "output": output, "overwrite": True}
            self.assertIn(self.studio.ask("/api/jobs", body)[0], (400, 409), output)
            self.assertIn(self.studio.ask("/api/save", {**body, "output": output + ".otio" if output.endswith("o.mp4") else output})[0], (400, 409), output)
        self.assertEqual({file.name for file in out.iterdir()}, {"secret.mp4"})

    def test_wrong_requests_get_one_line(self):
        deep = "[" * 100000
        for path in ("/api/frame", "/api/sound", "/api/waveform", "/api/command", "/api/jobs", "/api/save", "/api/open", "/api/clips"):
            for body in ("", "{", "[]", "null", '"a"', deep, '{"clip": 5}', '{"clip": "c1", "chain": 5}', '{"path": {}}', b"\xff\xfe"):
                status, answer = self.studio.json(path, body)
                self.assertTrue(400 <= status < 500 and answer["error"] and "\n" not in answer["error"], (path, body[:40], answer))
        for wrong in ({"at": -1}, {"at": 1e300}, {"width": 1e9}, {"width": 0.5}, {"clip": "c99"}, {"chain": {"e": ["grey"]}}, {"chain": {"e": [""]}},
                      {"chain": {"e": ["--help"]}}, {"chain": {"e": ["invert"] * 65}}, {"lane": "x" * 65}, {"chain": {"e": ["volume"]}}):
            self.assertTrue(400 <= self.frame(**wrong) < 500, wrong)
        status, answer = self.studio.json("/api/jobs", {"clip": self.clip, "output": f"{self.inside}/o.mp4", "options": {"overwrite": "yes"}})
        self.assertEqual((status, "no option 'overwrite'" in answer["error"]), (400, True))
        self.assertEqual(self.studio.json("/api/open", {"path": f"{self.inside}/bad.otio"})[0], 400)
        self.assertEqual(self.studio.ask("/api/clips/c1/thumbnail?at=x")[0], 400)
        self.assertEqual(self.frame(), 200)

    def test_crowds_and_slow_ones_keep_nobody_from_being_answered(self):
        request = f"GET /api/start HTTP/1.1\r\nHost: 127.0.0.1:{self.studio.port}\r\nCookie: aveffect-{self.studio.port}={self.studio.token}\r\n"
        slow = [socket.create_connection(("127.0.0.1", self.studio.port)) for _ in range(8)]
        for each in slow:
            each.sendall(request.encode())  # whose end never comes
        answered = []

        def one():
            with socket.create_connection(("127.0.0.1", self.studio.port), timeout=60) as each:
                each.sendall((request + "Connection: close\r\n\r\n").encode())
                answered.append(each.recv(12))
        crowd = [threading.Thread(target=one) for _ in range(1000)]
        for each in crowd:
            each.start()
        for each in crowd:
            each.join()
        for each in slow:
            each.close()
        self.assertEqual(answered.count(b"HTTP/1.1 200"), 1000)
        head = request.replace("GET /api/start", "POST /api/frame") + "Content-Type: application/json\r\n"
        for more in ("Content-Length: 99999999999\r\n\r\n", "Transfer-Encoding: chunked\r\n\r\n"):
            with socket.create_connection(("127.0.0.1", self.studio.port), timeout=60) as endless:
                endless.sendall((head + more).encode())
                sent = 0
                try:
                    while sent < 1 << 28:
                        sent += endless.send(b"10000\r\n" + b"x" * 65536 + b"\r\n")
                except OSError:
                    pass
                self.assertLess(sent, 1 << 28)
        self.assertEqual(self.frame(), 200)
        status = pathlib.Path(f"/proc/{self.studio.process.pid}/status").read_text()
        resident = int(status.split("VmRSS:")[1].split()[0])
        if not os.environ.get("AVEFFECT_SANITIZED"):
            self.assertLess(resident, 400_000)

    def test_of_a_lane_the_newest_is_made(self):
        statuses = []
        many = [threading.Thread(target=lambda: statuses.append(self.frame(lane="one", chain={"e": ["oil-painting"]}, width=0))) for _ in range(30)]
        for each in many:
            each.start()
        for each in many:
            each.join()
        self.assertEqual(set(statuses) - {200, 204}, set())
        self.assertIn(200, statuses)

    def test_cancelled_renders_leave_nothing(self):
        before = set(self.inside.iterdir())
        body = {"clip": self.clip, "chain": {"e": ["oil-painting:oilpainting_brushsize=200"]}, "options": {"size": "1920x1080"}}
        jobs = [self.studio.json("/api/jobs", {**body, "output": f"{self.inside}/{name}.mp4"})[1]["id"] for name in "xy"]
        while self.studio.json("/api/jobs")[1][-2]["state"] == "waiting":
            time.sleep(0.05)
        for job in reversed(jobs):
            self.assertEqual(self.studio.ask(f"/api/jobs/{job}", method="DELETE")[0], 200)
        deadline = time.monotonic() + 30
        while {one["state"] for one in self.studio.json("/api/jobs")[1][-2:]} != {"cancelled"}:
            self.assertLess(time.monotonic(), deadline)
            time.sleep(0.05)
        self.assertEqual(set(self.inside.iterdir()), before)
        self.assertEqual(self.studio.ask(f"/api/jobs/{jobs[0]}/file")[0], 400)

    def test_it_ends_when_it_should(self):
        for how, code in ((signal.SIGINT, 130), (signal.SIGHUP, 129), (signal.SIGKILL, -9)):
            studio = Studio(str(self.inside / "a.mp4"), scratch=str(self.outside))
            body = {"clip": "c1", "chain": {"e": ["oil-painting"]}, "output": f"{self.inside}/{code}.mp4"}
            studio.json("/api/start")
            studio.json("/api/jobs", body)
            self.assertEqual(studio.end(how), code)
            for _ in range(100):
                if {file.name for file in self.outside.iterdir()} == {"secret.mp4"}:
                    break
                time.sleep(0.05)
            self.assertEqual({file.name for file in self.outside.iterdir()}, {"secret.mp4"}, "a folder is left")
            self.assertFalse(pathlib.Path(body["output"]).exists())
        studio = Studio("--folder", str(self.inside), "--exit-when-closed", scratch=str(self.scratch))
        connection = http.client.HTTPConnection("127.0.0.1", studio.port)
        connection.request("GET", "/api/events", headers={"Cookie": f"aveffect-{studio.port}={studio.token}"})
        self.assertEqual(connection.getresponse().read(13), b"event: jobs\nd")
        connection.close()
        self.assertEqual(studio.process.wait(30), 0)
        studio.process.communicate()
        for words, text in ((["--port", "99999"], "--port"), (["--folder", "/no/such"], "/no/such is no folder")):
            failed = subprocess.run([PROGRAM, "studio", *words], capture_output=True, text=True)
            self.assertNotEqual(failed.returncode, 0)
            self.assertIn(text, failed.stderr)
            self.assertEqual(failed.stderr.count("\n"), 1)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
