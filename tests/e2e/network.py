"""A network of its own for one test: a computer at home, a router that translates addresses, and the world outside."""
import os
import subprocess
import sys

APART = "KELMIO_APART"
HOME_ADDRESS, ROUTER_INSIDE, ROUTER_OUTSIDE = "192.168.77.2", "192.168.77.1", "198.51.100.1"
WORLD_ADDRESS = "198.51.100.2"

# The router forgets who talked to whom as soon as the strictest that are sold.
FORGETS_AFTER = 30  # seconds


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


def build():
    for place in ("home", "router", "world"):
        run("ip", "netns", "add", place)
        run(*within(place), "ip", "link", "set", "lo", "up")
    for place, end, address in (("home", "inside", ROUTER_INSIDE), ("world", "outside", ROUTER_OUTSIDE)):
        run("ip", "link", "add", end, "netns", "router", "type", "veth", "peer", "name", "wire", "netns", place)
        run(*within("router"), "ip", "address", "add", f"{address}/24", "dev", end)
        run(*within("router"), "ip", "link", "set", end, "up")
    for place, address in (("home", HOME_ADDRESS), ("world", WORLD_ADDRESS)):
        run(*within(place), "ip", "address", "add", f"{address}/24", "dev", "wire")
        run(*within(place), "ip", "link", "set", "wire", "up")
    run(*within("home"), "ip", "route", "add", "default", "via", ROUTER_INSIDE)
    run(*within("router"), "sysctl", "-qw", "net.ipv4.ip_forward=1")
    run(*within("router"), "nft", "add table ip nat; add chain ip nat out { type nat hook postrouting priority 100; };"
        " add rule ip nat out oifname outside masquerade")
    # Nobody comes in who was not asked, and none of them is remembered: a packet that comes a moment before the first
    # one goes out would take its port.
    for hook in ("forward", "input"):
        run(*within("router"), "nft", f"add table ip guard; add chain ip guard {hook}_in {{ type filter hook {hook} priority 0; }};"
            f" add rule ip guard {hook}_in iifname outside ct state new drop")
    for limit in ("nf_conntrack_udp_timeout", "nf_conntrack_udp_timeout_stream"):
        run(*within("router"), "sysctl", "-qw", f"net.netfilter.{limit}={FORGETS_AFTER}")


def connect(connected):
    """Plugs the cable of the computer at home in or out, on the router's side of it."""
    run(*within("router"), "ip", "link", "set", "inside", "up" if connected else "down")


def ask_for_names(server):
    """From now on, all in this network ask `server`."""
    with open("/run/resolv.conf", "w", encoding="ascii") as file:
        file.write(f"nameserver {server}\n")
    run("mount", "--bind", "/run/resolv.conf", "/etc/resolv.conf")
