"""A network of its own for one test: a computer at home, a router that translates addresses, and the world outside."""
import os
import subprocess
import sys

APART = "KELMIO_APART"
HOME_ADDRESS, ROUTER_INSIDE, ROUTER_OUTSIDE = "192.168.77.2", "192.168.77.1", "198.51.100.1"
WORLD_ADDRESS = "198.51.100.2"

# The router forgets who talked to whom as soon as the strictest that are sold.
FORGETS_AFTER = 30  # seconds
# Nobody comes in who was not asked, and none of them is remembered: a packet that comes a moment before the first one
# goes out would take its port.
RULES = """
add table ip nat
add chain ip nat out { type nat hook postrouting priority 100; }
add rule ip nat out oifname outside masquerade
add table ip guard
""" + "".join(f"""
add chain ip guard {hook}_in {{ type filter hook {hook} priority 0; }}
add rule ip guard {hook}_in iifname outside ct state new drop
""" for hook in ("forward", "input"))


def run(*command):
    subprocess.run(command, check=True, capture_output=True)


def go_apart():
    """Goes on in namespaces in which the test may do as it likes, and which end with it."""
    if APART in os.environ:
        run("mount", "-t", "tmpfs", "none", "/run")  # where the named namespaces are kept
        run("ip", "link", "set", "lo", "up")
        return
    apart = ["unshare", "--user", "--map-root-user", "--net", "--mount"]
    run(*apart, "true")
    os.environ[APART] = "1"
    os.execvp(apart[0], [*apart, sys.executable, "-B", *sys.argv])


def within(place):
    """The command that runs another in `home`, `router` or `world`."""
    return ("ip", "netns", "exec", place)


def ip(place, words):
    run("ip", "-n", place, *words.split())


def build():
    for place in ("home", "router", "world"):
        run("ip", "netns", "add", place)
        ip(place, "link set lo up")
    for place, end, router, address in (("home", "inside", ROUTER_INSIDE, HOME_ADDRESS),
                                        ("world", "outside", ROUTER_OUTSIDE, WORLD_ADDRESS)):
        ip("router", f"link add {end} type veth peer name wire netns {place}")
        for at, device, own in (("router", end, router), (place, "wire", address)):
            ip(at, f"address add {own}/24 dev {device}")
            ip(at, f"link set {device} up")
    ip("home", f"route add default via {ROUTER_INSIDE}")
    run(*within("router"), "nft", RULES)
    run(*within("router"), "sysctl", "-qw", "net.ipv4.ip_forward=1",
        *(f"net.netfilter.nf_conntrack_udp_timeout{kind}={FORGETS_AFTER}" for kind in ("", "_stream")))


def connect(connected):
    """Plugs the cable of the computer at home in or out, on the router's side of it."""
    ip("router", f"link set inside {'up' if connected else 'down'}")


def ask_for_names(server):
    """From now on, all in this network ask `server`."""
    with open("/run/resolv.conf", "w", encoding="ascii") as file:
        file.write(f"nameserver {server}\n")
    run("mount", "--bind", "/run/resolv.conf", "/etc/resolv.conf")
