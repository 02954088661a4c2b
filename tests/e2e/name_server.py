"""A name server that knows a handful of names: `name_server.py ADDRESS`, and on standard input a line for each record,
"NAME A ADDRESS" or "NAME SRV PRIORITY WEIGHT PORT TARGET". It says "ready" and answers until it is ended."""
import socket
import struct
import sys


def written(name):
    return b"".join(bytes([len(label)]) + label.encode() for label in name.split(".")) + b"\0"


def main():
    names, records = set(), {}
    for line in sys.stdin:
        name, kind, *words = line.split()
        names.add(written(name))
        if kind == "A":
            question, data = written(name) + struct.pack("!HH", 1, 1), socket.inet_aton(words[0])
        else:
            question = written(name) + struct.pack("!HH", 33, 1)
            data = struct.pack("!HHH", *map(int, words[:3])) + written(words[3])
        records.setdefault(question, []).append(data)
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as server:
        server.bind((sys.argv[1], 53))
        print("ready", flush=True)
        while True:
            query, client = server.recvfrom(1500)
            question = query[12 : query.index(b"\0", 12) + 5]
            answers = records.get(question.lower(), [])
            known = question[:-4].lower() in names
            header = query[:2] + struct.pack("!HHHHH", 0x8580 | (0 if known else 3), 1, len(answers), 0, 0)
            server.sendto(header + question + b"".join(
                b"\xc0\x0c" + question[-4:] + struct.pack("!IH", 60, len(each)) + each for each in answers), client)


if __name__ == "__main__":
    main()
