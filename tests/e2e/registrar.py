"""A registrar and proxy that others wrote, with accounts that have a password, over UDP, TCP and TLS."""
import os
import pathlib
import signal
import subprocess
import tempfile

import sound
from program import Home, free_port

PASSWORD = "correct-horse-41"
MODULES = "/usr/lib/x86_64-linux-gnu/kamailio/modules/"

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
mpath="{modules}"
{load}
modparam("tls", "tls_method", "TLSv1.2+")
modparam("tls", "private_key", "{folder}/server.key")
modparam("tls", "certificate", "{folder}/server.pem")
modparam("registrar", "default_expires", {expires})
modparam("registrar", "max_expires", {expires})

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
"""


def certify(folder, days=1, name="IP:127.0.0.1"):
    """An authority, and a server's certificate by it."""

    def openssl(*arguments):
        subprocess.run(["openssl", *arguments], cwd=folder, check=True, capture_output=True)

    openssl("req", "-x509", "-newkey", "rsa:2048", "-nodes", "-keyout", "authority.key", "-out", "authority.pem",
            "-subj", "/CN=Authority of the test", "-days", "2")
    openssl("req", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1", "-nodes", "-keyout", "server.key", "-out", "server.csr", "-subj", "/CN=Server")
    (folder / "names").write_text(f"subjectAltName={name}\n")
    openssl("x509", "-req", "-in", "server.csr", "-CA", "authority.pem", "-CAkey", "authority.key", "-CAcreateserial",
            "-out", "server.pem", "-days", str(days), "-extfile", "names")


class Registrar:
    """`within` is a command that runs another: it stands at `address` there."""

    def __init__(self, expires=60, address="127.0.0.1", within=(), **certificate):
        self.address, self._within = address, within
        self._folder = tempfile.TemporaryDirectory(prefix="kelmio-registrar-")
        self.folder = pathlib.Path(self._folder.name)
        certify(self.folder, **{"name": f"IP:{address}"} | certificate)
        self.authority = self.folder / "authority.pem"
        self.port, self.tls_port = free_port(), free_port()
        modules = ("tm", "sl", "pv", "rr", "maxfwd", "usrloc", "registrar", "textops", "siputils", "xlog", "auth", "tls")
        (self.folder / "kamailio.cfg").write_text(CONFIG.format(
            address=address, port=self.port, tls_port=self.tls_port, folder=self.folder, modules=MODULES, password=PASSWORD,
            expires=expires, load="\n".join(f'loadmodule "{module}.so"' for module in modules)))
        self.start()

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.stop()
        self._folder.cleanup()

    def start(self):
        self._log = open(self.folder / "log", "ab")  # pylint: disable=consider-using-with
        self._process = subprocess.Popen(
            [*self._within, "kamailio", "-f", self.folder / "kamailio.cfg", "-DD", "-E", "-m", "64", "-M", "16", "-Y", self.folder, "-P", self.folder / "pid"],
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
    """A home whose line is an account with `registrar`."""

    NUMBER = 7

    def __init__(self, registrar, transport="tls", password=PASSWORD, encryption="preferred", authority=True, server=None, more=(), **home):
        self._registrar, self._transport, self._password = registrar, transport, password
        self._encryption, self._authority, self._server, self._more = encryption, authority, server, more
        home["settings"] = {"CommDeviceID": self.NUMBER, "AutoAnswerRingCount": 1} | home.get("settings", {})
        super().__init__(**home)

    def set_line(self, port, ring_period):
        registrar = self._registrar
        at = registrar.tls_port if self._transport == "tls" else registrar.port
        lines = ["[Devices]", f"SIP account 1={self.NUMBER}", "[SIP]", f"Listen=127.0.0.1:{port}", "[SIP account 1]",
                 f"Server={self._server or f'{registrar.address}:{at}'}", "User=line", f"Transport={self._transport}", f"RingPeriod={ring_period}",
                 f"Encryption={self._encryption}", *self._more]
        if self._authority:
            lines.append(f"Authority={registrar.authority}")
        (self.path / "Lines.ini").write_text("\r\n".join(lines) + "\r\n", newline="")
        (self.path / "SIP account 1.password").write_text(self._password)
        (self.path / "SIP account 1.password").chmod(0o600)


class Baresip:
    """A caller with an account at `registrar` that dials `line`, says what stands in `speech.wav` and keeps what it hears.

    `more` are parameters of its account.
    """

    def __init__(self, registrar, folder, speech, more="", address="127.0.0.1", within=(), modules=("srtp",)):
        self._folder = folder
        sound.write_wave(folder / "speech.wav", speech)
        (folder / "config").write_text(
            f"sip_listen {f'[{address}]' if ':' in address else address}:{free_port()}\nnet_interface {address}\nsip_cafile {registrar.authority}\n"
            f"net_af {'ipv6' if ':' in address else 'ipv4'}\nrtcp_mux yes\naudio_source aufile,{folder}/speech.wav\naudio_player aufile,none\n"
            f"audio_alert aufile,none\nsnd_path {folder}\nmodule_path /usr/lib/baresip/modules\nmodule_app account.so\n"
            "module g711.so\nmodule aufile.so\nmodule sndfile.so\nmodule_app menu.so\n"
            + "".join(f"module {module}.so\n" for module in modules))
        (folder / "accounts").write_text(
            f'"Caller" <sip:caller@{registrar.address}:{registrar.tls_port};transport=tls>;auth_pass={PASSWORD};'
            f"regint=60;audio_codecs=PCMU{more}\n")
        (folder / "contacts").write_text("")
        self._command = [*within, "baresip", "-f", folder, "-e", f"/dial sip:line@{registrar.address}:{registrar.tls_port}"]

    def call(self, seconds=9):
        """What it says of the call."""
        with subprocess.Popen([*self._command, "-t", str(seconds)], stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                              stderr=subprocess.STDOUT) as baresip:
            try:
                return baresip.communicate(timeout=seconds + 30)[0].decode(errors="replace")
            finally:
                baresip.kill()

    def heard(self):
        """The file with what it heard."""
        [file] = self._folder.glob("dump-*-dec.wav")
        return file


def registered(program, since=0, timeout=30):
    program.wait_for_log("Registered with", since, timeout)
