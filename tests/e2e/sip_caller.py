"""A caller on raw sockets: it says exactly the SIP and RTP that a test wants said, and notes what comes back.

Loopback only, UDP, G.711 mu-law. Nothing is sent again: on loopback nothing gets lost unless the test wants it.
"""
import email
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
JANE = '"Jane Sample" <sip:5551234@127.0.0.1>'


class Message:
    """A SIP message, taken apart as far as a caller needs it."""

    def __init__(self, data):
        self.first, _, rest = data.decode("utf-8", "replace").partition("\r\n")
        self.fields = email.message_from_string(rest)
        self.method, status, *_ = self.first.split(" ")
        self.status = int(status) if self.method == "SIP/2.0" else None

    def answers(self, method):
        return self.fields["CSeq"].endswith(method)


class Voice(threading.Thread):
    """Sends what it is given to say in packets of 20 ms on time, silence in between; keeps every packet heard.

    `loss` is the share of packets of what is said that never leave, the same ones in every run; `lost` counts them.
    `jitter` is the standard deviation of the packets' delay in seconds.
    """

    def __init__(self, loss=0.0, jitter=0.0):
        super().__init__(daemon=True)
        self.socket = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
        self.socket.bind(("127.0.0.1", 0))
        self.socket.settimeout(0.2)
        self.port = self.socket.getsockname()[1]
        self.lost = 0
        self._fate, self._delays = random.Random(7), random.Random(7)
        self._loss, self._jitter = loss, jitter
        self._lock = threading.Lock()
        self._to_say = np.zeros(0, np.int16)
        self._keys = []
        self._said = threading.Event()
        self._said.set()
        self._over = threading.Event()
        self._heard = {}
        self._ear = threading.Thread(target=self._listen, daemon=True)

    def begin(self, port):
        self._target = ("127.0.0.1", port)
        self.start()
        self._ear.start()

    def say(self, samples):
        """Says it and returns once the last packet is under way."""
        self.begin_to_say(samples)
        assert self._said.wait(60), "the caller could not say all in time"

    def begin_to_say(self, samples):
        with self._lock:
            self._to_say = np.concatenate([self._to_say, samples])
            self._said.clear()

    def press(self, key):
        """A key by RFC 4733: an event of 100 ms, its end sent three times."""
        self._keys.append("0123456789*#ABCD".index(key))

    def heard(self):
        """All that came so far, laid out by the time stamps of the packets."""
        packets = dict(self._heard)
        first = min(packets, default=0)
        whole = np.zeros(max(packets, default=0) - first + sound.FRAME * 3, np.int16)
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
        event = []
        for tick in itertools.count():
            stamp = tick * sound.FRAME
            if self._keys and not event:
                event = self._event(self._keys.pop(0), stamp)
            lost = False
            if event:
                packets = event.pop(0)
            else:
                frame = self._next_frame()
                lost = len(frame) > 0 and self._fate.random() < self._loss
                packets = [(0, stamp, sound.mulaw_encode(np.pad(frame, (0, sound.FRAME - len(frame)))))]
            self.lost += lost
            for payload_type, packet_stamp, payload in packets:
                sequence += 1
                delay = self._jitter * (3 + min(max(self._delays.gauss(0.0, 1.0), -3), 3))
                header = struct.pack("!BBHII", 0x80, payload_type, sequence & 0xFFFF, packet_stamp, 0x4B454C4D)
                if not lost:
                    waiting.append((started + tick * _PACKET_SECONDS + delay, header + payload))
            if not self._send_until(started + (tick + 1) * _PACKET_SECONDS, waiting):
                return

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

    @staticmethod
    def _event(code, stamp):
        """The packets of each 20 ms."""
        payloads = [struct.pack("!BBH", code, 0x80 * (tick == 5) | 10, tick * sound.FRAME) for tick in range(1, 6)]
        return [[(_EVENT_PAYLOAD, stamp, payload)] * count for payload, count in zip(payloads, (1, 1, 1, 1, 3))]

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

    def __init__(self, port, caller=JANE, events=True, **voice):
        self.voice = Voice(**voice)
        self.ended = threading.Event()  # the far end has hung up
        self.ended_at = None
        self._socket = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
        self._socket.connect(("127.0.0.1", port))
        self._socket.settimeout(0.2)
        self._address = "127.0.0.1:%d" % self._socket.getsockname()[1]
        self._call_id = uuid.uuid4().hex
        self._from = f"{caller};tag={uuid.uuid4().hex[:10]}"
        self._to = f"<sip:line@127.0.0.1:{port}>"
        self._target = f"sip:line@127.0.0.1:{port}"
        self._branch = self._new_branch()
        self._news = threading.Condition()
        self._responses = []
        self._open = True
        self._reader = threading.Thread(target=self._read, daemon=True)
        self._reader.start()
        formats, event_lines = "0", ""
        if events:
            formats = f"0 {_EVENT_PAYLOAD}"
            event_lines = f"a=rtpmap:{_EVENT_PAYLOAD} telephone-event/8000\r\na=fmtp:{_EVENT_PAYLOAD} 0-15\r\n"
        self._send(self._request("INVITE", 1, self._branch, self._to, (
            "v=0\r\no=- 1 1 IN IP4 127.0.0.1\r\ns=-\r\nc=IN IP4 127.0.0.1\r\nt=0 0\r\n"
            f"m=audio {self.voice.port} RTP/AVP {formats}\r\na=rtpmap:0 PCMU/8000\r\n{event_lines}a=ptime:20\r\n")))

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.close()

    def wait_for(self, status, method="INVITE"):
        """Waits for an answer with this status; fails when a final one of another kind comes."""

        def told():
            return [m.status for m in self._responses if m.answers(method)]

        with self._news:
            self._news.wait_for(lambda: status in told() or max(told(), default=0) >= 300, 20)
            assert status in told(), f"no {status} to {method} but {[m.first for m in self._responses]}"

    def answered(self):
        """Waits until the program has taken the call; sound runs from then on."""
        self.wait_for(200)
        self.voice.begin(self._far_rtp_port)

    def cancel(self):
        self._send(self._request("CANCEL", 1, self._branch, self._to))
        self.wait_for(200, "CANCEL")
        self.wait_for(487)

    def hang_up(self):
        self._send(self._request("BYE", 2, self._new_branch(), self._far_to))
        self.wait_for(200, "BYE")
        self.close()

    def close(self):
        """Leaves without a word, when that has not been said yet."""
        if self._open:
            self._open = False
            self._reader.join(2)
            self.voice.end()
            self._socket.close()

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
            if message.status:
                self._told(message)
            else:
                self._asked(message)

    def _told(self, message):
        if message.status >= 200 and message.answers("INVITE"):
            branch = self._branch
            if message.status < 300:
                branch = self._new_branch()
                self._far_to = message.fields["To"]
                self._target = re.search(r"<([^>]+)>", message.fields["Contact"]).group(1)
                self._far_rtp_port = int(re.search(r"m=audio (\d+)", message.fields.get_payload()).group(1))
            self._send(self._request("ACK", 1, branch, message.fields["To"]))
        with self._news:
            self._responses.append(message)
            self._news.notify_all()

    def _asked(self, message):
        same = "".join(f"{name}: {value}\r\n" for name in ("Via", "From", "To", "Call-ID", "CSeq")
                       for value in message.fields.get_all(name))
        self._send(f"SIP/2.0 200 OK\r\n{same}Content-Length: 0\r\n\r\n")
        if message.method == "BYE" and not self.ended.is_set():
            self.ended_at = time.monotonic()
            self.ended.set()


def leave_message(program, samples, caller=JANE, after=0.3, **voice):
    """A call that says them once it is recorded and hangs up `after` that many seconds, when they have arrived."""
    mark = program.mark()
    with Call(program.port, caller, **voice) as call:
        call.answered()
        program.wait_for_log("Recording call...", mark)
        call.voice.say(samples)
        time.sleep(after)
        call.hang_up()
    return call
