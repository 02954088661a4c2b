"""A registrar and proxy that others wrote, with accounts that have a password, over UDP, TCP and TLS."""
import os
import signal
import subprocess
import unittest

import sound
from baresip import Baresip
from program import Beside, Home, Program, eventually, free_port

PASSWORD = "correct-horse-41"
MODULES = "".join(f'loadmodule "{module}.so"\n' for module in (
    "tm", "sl", "pv", "rr", "maxfwd", "usrloc", "registrar", "textops", "siputils", "xlog", "auth", "tls"))

CONFIG = """#!KAMAILIO
log_stderror=yes
debug=1
children=1
tcp_children=1
disable_tcp=no
enable_tls=yes
listen=udp:{address}:{port}
listen=tcp:{address}:{port}
listen=tls:{address}:{tls_port}
mpath="/usr/lib/x86_64-linux-gnu/kamailio/modules/"
MODULES
modparam("tls", "tls_method", "TLSv1.2+")
modparam("tls", "private_key", "{folder}/server.key")
modparam("tls", "certificate", "{folder}/server.pem")
modparam("registrar", "default_expires", 60)
modparam("registrar", "max_expires", 60)

request_route {{
  if (is_method("REGISTER")) {{
    xlog("L_ERR", "REGISTER from $fU over $proto, answers a challenge: $au\\n");
    if (!pv_www_authenticate("{address}", "{password}", "0")) {{
      www_challenge("{address}", "0");
      exit;
    }}
    save("location");
    exit;
  }}
  if (has_totag()) {{
    if (loose_route() || is_method("ACK")) t_relay();
    exit;
  }}
  if (is_method("CANCEL")) {{ t_relay(); exit; }}
  if (is_method("OPTIONS")) {{ sl_send_reply("200", "OK"); exit; }}
  if (is_method("INVITE")) {{
    if (!pv_proxy_authenticate("{address}", "{password}", "0")) {{
      proxy_challenge("{address}", "0");
      exit;
    }}
    consume_credentials();
    record_route();
  }}
  if (!lookup("location")) {{ sl_send_reply("404", "Not Found"); exit; }}
  t_relay();
}}
""".replace("MODULES", MODULES)


def certify(folder, days=1, name="IP:127.0.0.1"):
    """An authority, and a server's certificate by it."""

    def openssl(*arguments):
        subprocess.run(["openssl", *arguments], cwd=folder, check=True, capture_output=True)

    openssl("req", "-x509", "-newkey", "rsa:2048", "-nodes", "-keyout", "authority.key", "-out", "authority.pem",
            "-subj", "/CN=Authority of the test", "-days", "2")
    openssl("req", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1", "-nodes",
            "-keyout", "server.key", "-out", "server.csr", "-subj", "/CN=Server")
    (folder / "names").write_text(f"subjectAltName={name}\n")
    openssl("x509", "-req", "-in", "server.csr", "-CA", "authority.pem", "-CAkey", "authority.key", "-CAcreateserial",
            "-out", "server.pem", "-days", str(days), "-extfile", "names")


class Registrar(Beside):
    """`within` is a command that runs another: it stands at `address` there."""

    def __init__(self, address="127.0.0.1", within=(), **certificate):
        super().__init__()
        self.address, self._within = address, within
        certify(self.folder, **{"name": f"IP:{address}"} | certificate)
        self.authority = self.folder / "authority.pem"
        self.port, self.tls_port = free_port(), free_port()
        (self.folder / "kamailio.cfg").write_text(CONFIG.format(
            address=address, port=self.port, tls_port=self.tls_port, folder=self.folder, password=PASSWORD))
        self.begin()
        self.callback(self.stop)

    def begin(self):
        self._log = open(self.folder / "log", "ab")  # pylint: disable=consider-using-with
        self._process = subprocess.Popen(
            [*self._within, "kamailio", "-f", self.folder / "kamailio.cfg", "-DD", "-E", "-m", "64", "-M", "16",
             "-Y", self.folder, "-P", self.folder / "pid"],
            stdin=subprocess.DEVNULL, stdout=self._log, stderr=self._log, start_new_session=True)

    def stop(self):
        """It is gone as in a power cut: asked to leave, it now and then waits for itself for good."""
        os.killpg(self._process.pid, signal.SIGKILL)
        self._process.wait()
        self._log.close()

    def asked(self):
        """What it was asked for, a line each."""
        return [line for line in (self.folder / "log").read_text(errors="replace").splitlines() if "REGISTER" in line]


class AccountHome(Home):
    """A home whose line is an account with `registrar`. `more` are lines of the account's settings."""

    def __init__(self, registrar, transport="tls", password=PASSWORD, encryption="preferred", authority=True,
                 server=None, more="", greeting=None):
        port = registrar.tls_port if transport == "tls" else registrar.port
        super().__init__({"CommDeviceID": 7, "AutoAnswerRingCount": 1}, greeting, line=(
            "[Devices]\nSIP account 1=7\n[SIP account 1]\nUser=line\nRingPeriod=500\n"
            f"Server={server or f'{registrar.address}:{port}'}\nTransport={transport}\nEncryption={encryption}\n{more}"
            + (f"Authority={registrar.authority}\n" if authority else "")))
        (self.path / "SIP account 1.password").write_text(password)
        (self.path / "SIP account 1.password").chmod(0o600)


class AccountTestCase(unittest.TestCase):
    """Test cases whose program has an account with a registrar."""

    def start(self, registrar, within=(), **home):
        self.registrar = registrar
        self.home = self.enterContext(AccountHome(registrar, **home))
        self.program = self.enterContext(Program(self.home, within=within))

    def registered(self, since=0, timeout=30):
        self.program.wait_for_log("Registered with", since, timeout)

    def take_a_call(self, said, speech, parameters="", modules=("srtp",), address="127.0.0.1", within=(), seconds=9):
        """From another account: `said` is its sound, which holds `speech`. What the caller heard."""
        server = f"{self.registrar.address}:{self.registrar.tls_port}"
        account = f'"Caller" <sip:caller@{server};transport=tls>;auth_pass={PASSWORD};regint=60;audio_codecs=PCMU'
        more = f"sip_cafile {self.registrar.authority}\nnet_af {'ipv6' if ':' in address else 'ipv4'}\nrtcp_mux yes\n"
        caller = self.enterContext(Baresip(said, account + parameters, modules, more, address, within))
        told = caller.call(f"sip:line@{server}", seconds)
        eventually(self.home.messages, "a message; baresip: " + told + "".join(self.program.log[-8:]))
        [(name, record)] = self.home.complete_messages(1)
        self.assertEqual(record["Number"], "caller")
        sound.assert_arrived(speech, sound.read_wave(self.home.inbox / name), 0.999, undamaged=False)
        return caller.heard()
