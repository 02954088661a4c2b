"""A caller on raw sockets: it says exactly the SIP and RTP that a test wants said, and notes what comes back.

Loopback only, UDP, G.711 mu-law. Nothing is sent again: on loopback nothing gets lost unless the test wants it.
"""
import itertools
import random
import re
import socket
import struct
import threading
import time
import uuid

import numpy as np

import sound

_PACKET_SECONDS = sound.FRAME / sound.RATE
_EVENT_PAYLOAD = 101


class Message:
    """A SIP message, taken apart as far as a caller needs it."""

    def __init__(self, data):
        head, _, self.body = data.decode("utf-8", "replace").partition("\r\n\r\n")
        self.first, *lines = head.split("\r\n")
        self.headers = [(name.strip().lower(), value.strip()) for name, _, value in (line.partition(":") for line in lines)]
        parts = self.first.split(" ", 2)
        self.status = int(parts[1]) if parts[0] == "SIP/2.0" else None
        self.method = None if self.status else parts[0]

    def all(self, name):
        return [value for key, value in self.headers if key == name]

    def get(self, name):
        return next(iter(self.all(name)), "")


class Voice(threading.Thread):
    """Sends what it is given to say in packets of 20 ms on time, silence in between; keeps every packet heard.

    `loss` is the share of packets of what is said that never leave, the same ones in every run; `lost` counts them.
    `jitter` is the standard deviation of the packets' delay in seconds.
    """

    def __init__(self, loss=0.0, jitter=0.0, seed=7):
        super().__init__(daemon=True)
        self.socket = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
        self.socket.bind(("127.0.0.1", 0))
        self.socket.settimeout(0.2)
        self.port = self.socket.getsockname()[1]
        self.lost = 0
        self._fate, self._delays = random.Random(seed), random.Random(seed)
        self._loss, self._jitter = loss, jitter
        self._lock = threading.Lock()
        self._to_say = np.zeros(0, np.int16)
        self._keys = []
        self._said = threading.Event()
        self._said.set()
        self._over = threading.Event()
        self._heard = {}
        self._ear = threading.Thread(target=self._listen, daemon=True)

    def begin(self, host, port):
        self._target = (host, port)
        self.start()
        self._ear.start()

    def say(self, samples, timeout=60):
        """Says it and returns once the last packet is under way."""
        self.begin_to_say(samples)
        assert self._said.wait(timeout), "the caller could not say all in time"

    def begin_to_say(self, samples):
        with self._lock:
            self._to_say = np.concatenate([self._to_say, samples])
            self._said.clear()

    def press(self, key):
        """A key by RFC 4733: an event of 100 ms, its end sent three times."""
        with self._lock:
            self._keys.append("0123456789*#ABCD".index(key))

    def heard(self):
        """All that came so far, laid out by the time stamps of the packets."""
        packets = dict(self._heard)
        if not packets:
            return sound.silence(0)
        first = min(packets)
        whole = np.zeros(max(packets) - first + sound.FRAME * 3, np.int16)
        for stamp, payload in packets.items():
            samples = sound.mulaw_decode(payload)
            whole[stamp - first : stamp - first + len(samples)] = samples[: len(whole) - (stamp - first)]
        return whole

    def end(self):
        self._over.set()
        for thread in (self, self._ear):
            if thread.is_alive():
                thread.join(2)
        self.socket.close()

    def run(self):
        started, waiting, sequence = time.monotonic(), [], 1000
        event = None
        for tick in itertools.count():
            stamp = tick * sound.FRAME
            event = event or self._next_event(stamp)
            lost = False
            if event:
                packets, event = self._event_packets(event)
            else:
                frame = self._next_frame()
                lost = len(frame) > 0 and self._fate.random() < self._loss
                packets = [(0, stamp, sound.mulaw_encode(np.pad(frame, (0, sound.FRAME - len(frame)))))]
            self.lost += lost
            for payload_type, packet_stamp, payload in packets:
                sequence += 1
                header = struct.pack("!BBHII", 0x80, payload_type, sequence & 0xFFFF, packet_stamp, 0x4B454C4D)
                if not lost:
                    waiting.append((started + tick * _PACKET_SECONDS + self._delay(), header + payload))
            if not self._send_until(started + (tick + 1) * _PACKET_SECONDS, waiting):
                return

    def _delay(self):
        if not self._jitter:
            return 0.0
        return 3 * self._jitter + min(max(self._delays.gauss(0.0, self._jitter), -3 * self._jitter), 3 * self._jitter)

    def _send_until(self, end, waiting):
        """Sends what is due before `end`, each at its time; False when the call is over."""
        waiting.sort(key=lambda item: item[0])
        while True:
            due = min(waiting[0][0] if waiting else end, end)
            if self._over.wait(max(due - time.monotonic(), 0)):
                return False
            if due >= end:
                return True
            try:
                self.socket.sendto(waiting.pop(0)[1], self._target)
            except OSError:
                pass  # the other side has closed its port; the call ends by its signalling

    def _next_frame(self):
        with self._lock:
            frame, self._to_say = self._to_say[: sound.FRAME], self._to_say[sound.FRAME :]
            if len(self._to_say) == 0:
                self._said.set()
        return frame

    def _next_event(self, stamp):
        with self._lock:
            return (self._keys.pop(0), stamp, 0) if self._keys else None

    @staticmethod
    def _event_packets(event):
        code, stamp, duration = event
        duration += sound.FRAME
        last = duration >= 5 * sound.FRAME
        payload = struct.pack("!BBH", code, (0x80 if last else 0) | 10, duration)
        return [(_EVENT_PAYLOAD, stamp, payload)] * (3 if last else 1), None if last else (code, stamp, duration)

    def _listen(self):
        base = None
        while not self._over.is_set():
            try:
                data = self.socket.recv(2048)
            except (TimeoutError, OSError):
                continue
            if len(data) > 12 and data[1] & 0x7F == 0:
                stamp = struct.unpack("!I", data[4:8])[0]
                base = stamp if base is None else base
                # Relative to the first one, so that a stamp that wraps round doesn't matter.
                self._heard[(stamp - base + 0x80000000) % 0x100000000] = data[12:]


class Call:
    """One call from `caller` (what stands in From, display name included) to the line at `port`."""

    def __init__(self, port, caller='"Jane Sample" <sip:5551234@127.0.0.1>', events=True, **voice):
        self.voice = Voice(**voice)
        self.ended = threading.Event()  # the far end has hung up
        self.ended_at = None
        self._port = port
        self._events = events
        self._socket = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
        self._socket.connect(("127.0.0.1", port))
        self._socket.settimeout(0.2)
        self._address = "127.0.0.1:%d" % self._socket.getsockname()[1]
        self._call_id = uuid.uuid4().hex
        self._from = f"{caller};tag={uuid.uuid4().hex[:10]}"
        self._to = f"<sip:line@127.0.0.1:{port}>"
        self._target = f"sip:line@127.0.0.1:{port}"
        self._branch = ""
        self._cseq = 1
        self._news = threading.Condition()
        self._responses = []
        self._open = True
        self._reader = threading.Thread(target=self._read, daemon=True)
        self._reader.start()
        self._invite()

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.close()

    def wait_for(self, status, method="INVITE", timeout=20):
        """The first answer with this status (a number or several); fails when a final one of another kind comes."""
        wanted = (status,) if isinstance(status, int) else tuple(status)

        def found():
            return next((m for m in self._responses if m.status in wanted and m.get("cseq").endswith(method)), None)

        def refused():
            return [m.first for m in self._responses if m.status >= 300 and m.get("cseq").endswith(method)]

        with self._news:
            self._news.wait_for(lambda: found() or refused(), timeout)
            assert found(), f"no {wanted} to {method} but {refused() or [m.first for m in self._responses]}"
            return found()

    def answered(self, timeout=20):
        """Waits until the program has taken the call; sound runs from then on."""
        self.wait_for(200, timeout=timeout)
        self.voice.begin("127.0.0.1", self._far_rtp_port)
        return self

    def cancel(self):
        self._send(self._request("CANCEL", 1, self._branch, self._to))
        self.wait_for(200, "CANCEL")
        self.wait_for(487)

    def hang_up(self):
        self._cseq += 1
        self._send(self._request("BYE", self._cseq, self._new_branch(), self._far_to))
        self.wait_for(200, "BYE")
        self.close()

    def close(self):
        """Leaves without a word, when that has not been said yet."""
        if self._open:
            self._open = False
            self._reader.join(2)
            self.voice.end()
            self._socket.close()

    def _invite(self):
        formats, event_lines = "0", ""
        if self._events:
            formats = f"0 {_EVENT_PAYLOAD}"
            event_lines = f"a=rtpmap:{_EVENT_PAYLOAD} telephone-event/8000\r\na=fmtp:{_EVENT_PAYLOAD} 0-15\r\n"
        sdp = (f"v=0\r\no=- 1 1 IN IP4 127.0.0.1\r\ns=-\r\nc=IN IP4 127.0.0.1\r\nt=0 0\r\n"
               f"m=audio {self.voice.port} RTP/AVP {formats}\r\na=rtpmap:0 PCMU/8000\r\n{event_lines}a=ptime:20\r\n")
        self._branch = self._new_branch()
        self._send(self._request("INVITE", 1, self._branch, self._to, sdp))

    @staticmethod
    def _new_branch():
        return "z9hG4bK" + uuid.uuid4().hex[:16]

    def _request(self, method, cseq, branch, to, body=""):
        content = "Content-Type: application/sdp\r\n" if body else ""
        return (f"{method} {self._target} SIP/2.0\r\nVia: SIP/2.0/UDP {self._address};branch={branch};rport\r\n"
                f"Max-Forwards: 70\r\nFrom: {self._from}\r\nTo: {to}\r\nCall-ID: {self._call_id}\r\n"
                f"CSeq: {cseq} {method}\r\nContact: <sip:caller@{self._address}>\r\n{content}"
                f"Content-Length: {len(body.encode())}\r\n\r\n{body}")

    def _send(self, text):
        self._socket.send(text.encode())

    def _read(self):
        while self._open:
            try:
                message = Message(self._socket.recv(65536))
            except TimeoutError:
                continue
            except OSError:
                time.sleep(0.01)  # the port is closed just now: the program has gone or has not come yet
                continue
            if message.method:
                self._asked(message)
            else:
                self._told(message)

    def _told(self, message):
        if message.status >= 200 and message.get("cseq").endswith("INVITE"):
            to = message.get("to")
            if message.status < 300:
                self._far_to = to
                self._target = re.search(r"<([^>]+)>", message.get("contact")).group(1)
                self._far_rtp_port = int(re.search(r"m=audio (\d+)", message.body).group(1))
                self._send(self._request("ACK", 1, self._new_branch(), to))
            else:
                self._send(self._request("ACK", 1, self._branch, to))
        with self._news:
            self._responses.append(message)
            self._news.notify_all()

    def _asked(self, message):
        vias = "".join(f"Via: {via}\r\n" for via in message.all("via"))
        self._send(f"SIP/2.0 200 OK\r\n{vias}From: {message.get('from')}\r\nTo: {message.get('to')}\r\n"
                   f"Call-ID: {message.get('call-id')}\r\nCSeq: {message.get('cseq')}\r\nContent-Length: 0\r\n\r\n")
        if message.method == "BYE" and not self.ended.is_set():
            self.ended_at = time.monotonic()
            self.ended.set()
