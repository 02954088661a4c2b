"""Sound for the end-to-end tests: a test voice, G.711 mu-law, and how much of a sound arrived.

Samples are numpy arrays of 16-bit integers at 8000 a second throughout.
"""
import wave

import numpy as np

RATE = 8000
FRAME = 160  # 20 ms, the packet time of the calls


def voice(seconds, seed=1):
    """A voice that never repeats and never pauses: harmonics of a gliding pitch under moving formants.

    Without a pause every 20 ms frame has something in it that can be missed, and since no stretch is like another
    there is one way only to lay a recording over it.
    """
    rng = np.random.default_rng(seed)
    count = int(seconds * RATE)
    time = np.arange(count) / RATE

    def wander(low, high, changes_a_second):
        knots = rng.uniform(low, high, int(seconds * changes_a_second) + 3)
        return np.interp(time * changes_a_second, np.arange(len(knots)), knots)

    pitch = wander(95, 190, 3)
    phase = 2 * np.pi * np.cumsum(pitch) / RATE
    formants = [(wander(low, high, 4), width, gain) for low, high, width, gain in
                ((300, 800, 90, 1), (900, 2200, 140, 0.5), (2300, 3000, 200, 0.25))]
    sound = np.zeros(count)
    for harmonic in range(1, 34):
        frequency = harmonic * pitch
        strength = sum(gain / (1 + ((frequency - centre) / width) ** 2) for centre, width, gain in formants)
        sound += np.where(frequency < 3400, strength + 0.01, 0) * np.sin(harmonic * phase)
    sound *= wander(0.35, 1.0, 8)
    return np.round(sound / np.max(np.abs(sound)) * 14000).astype(np.int16)


def silence(seconds):
    return np.zeros(int(seconds * RATE), np.int16)


# Frequencies of the keypad's rows and columns: ITU-T Q.23.
_ROWS = (697, 770, 852, 941)
_COLUMNS = (1209, 1336, 1477, 1633)
_KEYS = ("123A", "456B", "789C", "*0#D")


def keypad_tone(key, seconds=0.12):
    row, column = next((r, keys.index(key)) for r, keys in enumerate(_KEYS) if key in keys)
    time = np.arange(int(seconds * RATE)) / RATE
    tone = np.sin(2 * np.pi * _ROWS[row] * time) + np.sin(2 * np.pi * _COLUMNS[column] * time)
    return np.round(tone * 6000).astype(np.int16)


# G.711 mu-law as ITU-T G.191 describes it: 14 significant bits, eight segments of sixteen steps, all bits inverted.
def mulaw_decode(payload):
    code = ~np.frombuffer(payload, np.uint8).astype(np.int32)
    magnitude = (((code & 15) << 3) + 0x84 << ((code >> 4) & 7)) - 0x84
    return np.where(code & 0x80, -magnitude, magnitude).astype(np.int16)


def mulaw_encode(samples):
    value = samples.astype(np.int32)
    magnitude = np.minimum(np.abs(value), 32635) + 0x84
    segment = np.floor(np.log2(magnitude)).astype(np.int32) - 7
    step = (magnitude >> (segment + 3)) & 15
    code = np.where(value < 0, 0x80, 0) | (segment << 4) | step
    return (code ^ 0xFF).astype(np.uint8).tobytes()


def read_wave(path, rate=RATE):
    with wave.open(str(path)) as file:
        assert (file.getframerate(), file.getnchannels(), file.getsampwidth()) == (rate, 1, 2), file.getparams()
        return np.frombuffer(file.readframes(file.getnframes()), "<i2")


def read_wide_wave(path):
    """A wave file of twice our rate."""
    return halve(read_wave(path, 2 * RATE).tobytes())


def halve(data):
    """Sound of twice our rate, as bytes, in samples of ours."""
    whole = np.frombuffer(data[: len(data) // 4 * 4], "<i2").astype(np.float64)
    return ((whole[0::2] + whole[1::2]) / 2).astype(np.int16)


def write_wave(path, samples):
    with wave.open(str(path), "wb") as file:
        file.setparams((1, 2, RATE, 0, "NONE", ""))
        file.writeframes(samples.astype("<i2").tobytes())


def offset_of(part, whole):
    """Where in `whole` the sound of `part` begins, in samples; may be negative."""
    size = 1 << int(len(part) + len(whole) - 1).bit_length()
    match = np.fft.irfft(np.fft.rfft(whole, size) * np.conj(np.fft.rfft(part, size)), size)
    best = int(np.argmax(match))
    return best if best < len(whole) else best - size


def _cut(whole, start, count):
    """`count` samples of `whole` from `start`, silence where there are none."""
    at = max(min(start, len(whole)), -count) + count
    return np.pad(whole, count)[at : at + count].astype(np.float64)


def same_voice(said, heard, least):
    """Whether quarters of a second of both are like each other by `least`, from 0 to 1: nine of ten, and on average.

    Piece by piece: the clocks of line and desk differ, and the sound follows now the one and now the other.
    """
    piece, reach = RATE // 4, RATE // 10
    start = offset_of(said, heard)
    alike = []
    for at in range(0, len(said) - piece, piece):
        near = _cut(heard, start + at - reach, piece + 2 * reach)
        part = said[at : at + piece].astype(np.float64)
        loudness = np.sqrt(np.convolve(near**2, np.ones(piece), "valid") * np.sum(part**2)) + 1
        alike.append(float(np.max(np.correlate(near, part) / loudness)))
    return np.mean(alike) > least and sum(one > least for one in alike) > 0.9 * len(alike)


class Comparison:
    """How `sent` came out in `received`: `correlation`, `level_db` (received over sent) and frames `damaged`.

    A frame is damaged when its error isn't `good_db` below the sound; G.711 alone leaves some 37 dB. A receiver may
    absorb delay by shifting what follows, so a frame counts only when it is found neither where the frame before was
    nor at a place near by where the frames behind it are found too.
    """

    _REACH = 10 * FRAME  # how far the sound may shift at a time

    def __init__(self, sent, received, good_db=15.0):
        self._good_db = good_db
        start = offset_of(sent, received)
        a, b = sent.astype(np.float64), _cut(received, start, len(sent))
        loudness = np.sqrt(np.sum(a * a) * np.sum(b * b))
        self.correlation = float(np.sum(a * b) / loudness) if loudness else 0.0
        self.level_db = float(10 * np.log10(max(np.sum(b * b), 1e-9) / np.sum(a * a)))
        self.frames = len(sent) // FRAME
        self.damaged = self._count_damaged(a, received, offset_of(sent[:RATE], received))

    def _count_damaged(self, sent, received, offset):
        damaged = 0
        for index in range(self.frames):
            if self._matches(sent, received, index, 1, offset):
                continue
            shifted = self._shift_at(sent, received, index, offset)
            if shifted is not None:
                offset = shifted
            else:
                damaged += 1
        return damaged

    def _matches(self, sent, received, index, frames, offset):
        part = sent[index * FRAME : (index + frames) * FRAME]
        error = part - _cut(received, offset + index * FRAME, len(part))
        return np.sum(part * part) > 10 ** (self._good_db / 10) * np.sum(error * error)

    def _shift_at(self, sent, received, index, offset):
        frames = min(3, self.frames - index)
        part = sent[index * FRAME : (index + frames) * FRAME]
        around = _cut(received, offset + index * FRAME - self._REACH, len(part) + 2 * self._REACH)
        shifted = offset - self._REACH + offset_of(part, around)
        return shifted if self._matches(sent, received, index, frames, shifted) else None

    def __str__(self):
        return (f"correlation {self.correlation:.5f}, level {self.level_db:+.3f} dB, "
                f"{self.damaged} of {self.frames} frames damaged")


def assert_arrived(sent, received, correlation=0.0, undamaged=True):
    """`received` holds `sent`, alike by more than `correlation`, and with no frame damaged if it is to be so."""
    comparison = Comparison(sent, received)
    assert comparison.correlation > correlation, comparison
    assert not (undamaged and comparison.damaged), comparison
    return comparison
