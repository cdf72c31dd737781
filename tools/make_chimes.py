#!/usr/bin/env python3
"""Writes the four chimes played before announcements: announce, AOS, LOS and
rotor. Plain sine notes with a soft attack and an exponential decay, 16-bit
mono at 22050 Hz, small enough to keep in the repository.

    tools/make_chimes.py resources/sounds
"""
import math
import struct
import sys
import wave

RATE = 22050


def note(freq, seconds, volume=0.5):
    samples = []
    count = int(RATE * seconds)
    for i in range(count):
        t = i / RATE
        attack = min(1.0, t / 0.01)
        decay = math.exp(-4.0 * t / seconds)
        # A little of the octave makes it a chime rather than a beep.
        s = math.sin(2 * math.pi * freq * t) + 0.3 * math.sin(4 * math.pi * freq * t)
        samples.append(volume * attack * decay * s / 1.3)
    return samples


def silence(seconds):
    return [0.0] * int(RATE * seconds)


CHIMES = {
    # Two falling notes: "listen".
    "announce.wav": note(880, 0.35) + note(660, 0.5),
    # Rising triad: the satellite comes up.
    "AOS.wav": note(523.25, 0.18) + note(659.25, 0.18) + note(783.99, 0.45),
    # Falling triad: it goes down.
    "LOS.wav": note(783.99, 0.18) + note(659.25, 0.18) + note(523.25, 0.45),
    # Two short high pips: the rotor is turning to the AOS position.
    "rotor.wav": note(1200, 0.12, 0.4) + silence(0.08) + note(1200, 0.12, 0.4),
}


def main():
    folder = sys.argv[1] if len(sys.argv) > 1 else "."
    for name, samples in CHIMES.items():
        with wave.open(f"{folder}/{name}", "wb") as out:
            out.setnchannels(1)
            out.setsampwidth(2)
            out.setframerate(RATE)
            out.writeframes(b"".join(struct.pack("<h", int(max(-1, min(1, s)) * 32767)) for s in samples))


if __name__ == "__main__":
    main()
