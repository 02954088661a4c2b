"""A name server that knows a handful of names: `name_server.py ADDRESS`, and on standard input a line for each record,
"NAME A ADDRESS" or "NAME SRV PRIORITY WEIGHT PORT TARGET". It says "ready" and answers until it is ended."""
import socket
import struct
import sys

TYPES = {"A": 1, "AAAA": 28, "SRV": 33}


def written(name):
    return b"".join(bytes([len(label)]) + label.encode() for label in name.split(".")) + b"\0"


def data_of(kind, words):
    if kind == "SRV":
        priority, weight, port, target = words
        return struct.pack("!HHH", int(priority), int(weight), int(port)) + written(target)
    return socket.inet_pton(socket.AF_INET6 if kind == "AAAA" else socket.AF_INET, words[0])


def asked_for(query):
    """Name, type and whole text of a query's only question."""
    labels, place = [], 12
    while query[place]:
        labels.append(query[place + 1 : place + 1 + query[place]].decode())
        place += 1 + query[place]
    [kind] = struct.unpack_from("!H", query, place + 1)
    return ".".join(labels).lower(), kind, query[12 : place + 5]


def main():
    records = {}
    for line in sys.stdin:
        name, kind, *words = line.split()
        records.setdefault((name, TYPES[kind]), []).append(data_of(kind, words))
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as server:
        server.bind((sys.argv[1], 53))
        print("ready", flush=True)
        while True:
            query, client = server.recvfrom(1500)
            name, kind, question = asked_for(query)
            answers = records.get((name, kind), [])
            known = any(name == each for each, _ in records)
            header = query[:2] + struct.pack("!HHHHH", 0x8580 | (0 if known else 3), 1, len(answers), 0, 0)
            server.sendto(header + question + b"".join(
                b"\xc0\x0c" + struct.pack("!HHIH", kind, 1, 60, len(each)) + each for each in answers), client)


if __name__ == "__main__":
    main()
