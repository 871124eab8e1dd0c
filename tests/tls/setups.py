"""The tables: how a server may be set up, and what becomes of a request to it."""
import ipaddress
from dataclasses import dataclass

from OpenSSL import SSL
from cryptography import x509
from cryptography.hazmat.primitives import hashes
from cryptography.x509.oid import ExtendedKeyUsageOID

import certificates as c
import servers as s

HOST = "service.test"

# What becomes of a request. The library says why it refuses one.
TAKEN, REFUSED = "taken", "refused"
KEYS_WRITTEN = "taken, and its keys are written to the file"

ANOTHER_HOST = "it was issued for another host"
NO_NAME = "it has no subject alternative name for a host"
EXPIRED = "certificate has expired"
NOT_YET = "certificate is not yet valid"
NO_ISSUER = "unable to get local issuer certificate"
NO_CA = "invalid CA certificate"
BAD_SIGNATURE = "certificate signature failure"
NO_PURPOSE = "unsuitable certificate purpose"
UNKNOWN_CRITICAL = "unhandled critical extension"
WEAK_KEY = "EE certificate key too weak"
WEAK_CA_KEY = "CA certificate key too weak"
WEAK_DIGEST = "CA signature digest algorithm too weak"
NOT_PERMITTED = "permitted subtree violation"
EXCLUDED = "excluded subtree violation"
REVOKED = "certificate revoked"
NO_STAPLE = "it demands a proof that it is not revoked, and the host gave none"
BAD_STAPLE = "the host's proof that it is not revoked is not valid"
INSECURE = "No secure connection could be made."
LOST = "The connection was lost."

ROOT = c.authority()
MIDDLE = c.authority(ROOT, "Intermediate")
STRANGER = c.authority(common_name="Stranger")
PROPER = c.server(MIDDLE, HOST)


@dataclass(frozen=True)
class Setup:
    what: str
    meet: object  # how the server treats a connection
    expected: str  # of the library
    libcurl: str  # of libcurl with its default options
    trusted: tuple = (ROOT,)
    host: str = HOST
    environment: str = "plain"
    lax: str | None = None  # of libcurl with a lax configuration of OpenSSL, which changes nothing for the library


def setup(what, chain, expected, libcurl=REFUSED, *, trusted=(ROOT,), host=HOST, lax=None, **tls):
    """A server that speaks TLS as it should, except for what is set here. `chain`: the server's identities."""
    meet = s.answering(s.context(chain, **tls))
    return Setup(what, meet, expected, libcurl, tuple(trusted), host, lax=lax)


def chained(*identities):
    return [*identities, MIDDLE]


def named(what, hosts, expected, libcurl=REFUSED, *, host=HOST, **how):
    return setup(what, chained(c.server(MIDDLE, *hosts, **how)), expected, libcurl, host=host)


def constrained(what, hosts, expected, libcurl=REFUSED, *, host=HOST, permitted=None, excluded=None, **how):
    middle = c.authority(ROOT, "Constrained", more=[(x509.NameConstraints(permitted, excluded), True)])
    return setup(what, [c.server(middle, *hosts, **how), middle], expected, libcurl, host=host)


def address(text):
    return x509.IPAddress(ipaddress.ip_address(text))


def network(text):
    return x509.IPAddress(ipaddress.ip_network(text))


def wrong_names():
    shop = "service.shop.test"
    mail = x509.SubjectAlternativeName([x509.RFC822Name("person@service.test")])
    uri = x509.SubjectAlternativeName([x509.UniformResourceIdentifier("https://service.test")])
    return [
        named("a common name alone", [], NO_NAME, TAKEN, common_name=HOST),
        named("a common name alone, with a wildcard", [], NO_NAME, TAKEN, common_name="*.shop.test", host=shop),
        named("a common name alone, an address", [], NO_NAME, TAKEN, common_name="127.0.0.1", host="127.0.0.1"),
        named("a common name alone, with a NUL", [], NO_NAME, common_name=HOST + "\0.evil.test"),
        named("the right common name, and an empty list of alternatives", [], NO_NAME, TAKEN, common_name=HOST,
              alternative=c.names()),
        named("the right common name, and only a mail address beside it", [], NO_NAME, TAKEN, common_name=HOST,
              alternative=mail),
        named("the right common name, and only a URI beside it", [], NO_NAME, TAKEN, common_name=HOST, alternative=uri),
        named("the right common name, another alternative", ["else.test"], ANOTHER_HOST, common_name=HOST),
        named("the right common name, only an address as alternative", [address("127.0.0.1")], ANOTHER_HOST,
              common_name=HOST),
        named("another host", ["else.test"], ANOTHER_HOST),
        named("a host above", ["test"], ANOTHER_HOST),
        named("a host below", ["www.service.test"], ANOTHER_HOST),
        named("a host whose name ends alike", ["aservice.test"], ANOTHER_HOST),
        named("a host whose name begins alike", ["service.test.evil.test"], ANOTHER_HOST),
        named("a wildcard for everything", ["*"], ANOTHER_HOST),
        named("a wildcard for a top level", ["*.test"], ANOTHER_HOST),
        named("a wildcard for a public suffix", ["*.co.uk"], TAKEN, TAKEN, host="service.co.uk"),
        named("a wildcard for the level below", ["*.service.test"], ANOTHER_HOST),
        named("a wildcard for two levels at once", ["*.shop.test"], ANOTHER_HOST, host="a.service.shop.test"),
        named("two wildcards", ["*.*.shop.test"], ANOTHER_HOST, host="a.service.shop.test"),
        named("a wildcard that is not the first label", ["service.*.test"], ANOTHER_HOST, host=shop),
        named("a wildcard for the end of a label", ["serv*.shop.test"], ANOTHER_HOST, host=shop),
        named("a wildcard for the beginning of a label", ["*ice.shop.test"], ANOTHER_HOST, host=shop),
        named("a wildcard in the middle of a label", ["s*e.shop.test"], ANOTHER_HOST, host=shop),
        named("a wildcard in an international label", ["xn--*.shop.test"], ANOTHER_HOST, host="xn--bcher-kva.shop.test"),
        named("an international name that is not encoded", ["bücher.shop.test"], ANOTHER_HOST,
              host="xn--bcher-kva.shop.test"),
        named("a NUL after the host", [HOST + "\0.evil.test"], ANOTHER_HOST),
        named("a dot after the host", [HOST + "."], ANOTHER_HOST, TAKEN),
        named("a dot before the host", ["." + HOST], ANOTHER_HOST),
        named("a blank before the host", [" " + HOST], ANOTHER_HOST),
        named("a URL in the place of the host", ["https://" + HOST], ANOTHER_HOST),
        named("another address", [address("127.0.0.2")], ANOTHER_HOST, host="127.0.0.1"),
        named("an address as a host name", ["127.0.0.1"], ANOTHER_HOST, host="127.0.0.1"),
        named("a wildcard for addresses", ["*.0.0.1"], ANOTHER_HOST, host="127.0.0.1"),
        named("an IPv6 address that begins alike", [address("7f00:1::")], ANOTHER_HOST, host="127.0.0.1"),
        constrained("a host that the authority may not vouch for", [HOST], NOT_PERMITTED,
                    permitted=[x509.DNSName("shop.test")]),
        constrained("a second host that the authority may not vouch for", [HOST, "else.test"], NOT_PERMITTED,
                    permitted=[x509.DNSName(HOST)]),
        constrained("a host that is excluded for the authority", [HOST], EXCLUDED, excluded=[x509.DNSName("test")]),
        constrained("a wildcard that covers the excluded host", ["*.shop.test"], EXCLUDED, TAKEN, host=shop,
                    excluded=[x509.DNSName(shop)]),
        constrained("an address that the authority may not vouch for", [address("127.0.0.1")], NOT_PERMITTED,
                    host="127.0.0.1", permitted=[network("10.0.0.0/8")]),
        constrained("an address that is excluded for the authority", [address("127.0.0.1")], EXCLUDED,
                    host="127.0.0.1", excluded=[network("127.0.0.0/8")]),
        constrained("a common name that the authority may not vouch for", [], NO_NAME, common_name=HOST,
                    permitted=[x509.DNSName("shop.test")]),
        constrained("a wildcard as common name that the authority may not vouch for", [], NO_NAME, TAKEN, host=shop,
                    common_name="*.shop.test", permitted=[x509.DNSName("else.test")]),
    ]


def dated(what, root, middle, leaf, expected):
    usual = (-10, 10)
    root = c.authority(valid=root or usual)
    middle = c.authority(root, "Intermediate", valid=middle or usual)
    return setup(what, [c.server(middle, HOST, valid=leaf or usual), middle], expected, trusted=[root])


def wrong_dates():
    past, future = (-9, -0.01), (0.01, 9)
    return [
        dated("expired a quarter of an hour ago", None, None, past, EXPIRED),
        dated("expired long ago", None, None, (-9000, -8000), EXPIRED),
        dated("valid from a quarter of an hour on", None, None, future, NOT_YET),
        dated("an expired intermediate authority", None, past, None, EXPIRED),
        dated("an intermediate authority that is not yet valid", None, future, None, NOT_YET),
        dated("an expired root", past, None, None, EXPIRED),
        dated("a root that is not yet valid", future, None, None, NOT_YET),
    ]


def below(what, middle, expected, **how):
    """An authority that may not be one."""
    return setup(what, [c.server(middle, HOST), middle], expected, **how)


def wrong_chains():
    own = c.server(None, HOST)
    strangers = c.server(STRANGER, HOST)
    another_root = c.authority(kind="SECP384R1")
    first = c.authority(ROOT, "Intermediate", length=0)
    short_root = c.authority(length=0)
    line = [MIDDLE]
    for number in range(110):
        line.insert(0, c.authority(line[0], "Link %d" % number))
    false_middle = c.tampered(MIDDLE)
    twice = [c.server(PROPER, HOST, common_name="Below a server"), PROPER, MIDDLE]
    return [
        setup("self-signed", [own], "self-signed certificate"),
        setup("an unknown root", [strangers], NO_ISSUER),
        setup("an unknown root, sent along", [strangers, STRANGER], "self-signed certificate in certificate chain"),
        setup("a root with a known name and another key", chained(PROPER), NO_ISSUER, trusted=[another_root]),
        setup("the intermediate authority is missing", [PROPER], NO_ISSUER),
        setup("another intermediate authority", [PROPER, c.authority(ROOT, "Other")], NO_ISSUER),
        setup("signed with another key than the issuer's", chained(c.server(MIDDLE, HOST, signer=another_root.key)),
              BAD_SIGNATURE),
        setup("a certificate that was changed", chained(c.tampered(PROPER)), BAD_SIGNATURE),
        setup("an intermediate authority that was changed", [PROPER, false_middle], BAD_SIGNATURE),
        setup("a server's certificate as authority", twice, NO_CA),
        below("an authority without CA:TRUE", c.authority(ROOT, "Intermediate", is_authority=False), NO_CA),
        below("an authority without basic constraints", c.authority(ROOT, "Intermediate", is_authority=None), NO_CA),
        below("an authority that may not sign certificates", c.authority(ROOT, "Intermediate", usages=("crl_sign",)),
              NO_CA),
        below("an authority with an unknown critical extension",
              c.authority(ROOT, "Intermediate", more=[c.unknown_extension(True)]), UNKNOWN_CRITICAL),
        setup("an unknown critical extension", chained(c.server(MIDDLE, HOST, more=[c.unknown_extension(True)])),
              UNKNOWN_CRITICAL),
        setup("more authorities than an authority allows",
              [c.server(c.authority(first, "Lower"), HOST), c.authority(first, "Lower"), first],
              "path length constraint exceeded"),
        setup("more authorities than the root allows",
              [c.server(c.authority(short_root, "Lower"), HOST), c.authority(short_root, "Lower")],
              "path length constraint exceeded", trusted=[short_root]),
        setup("112 authorities", [c.server(line[0], HOST), *line], "certificate chain too long"),
        setup("a chain of more than 100 kB", chained(PROPER) + [c.authority(None, "Flood " + 60 * "x")] * 200,
              INSECURE),
    ]


def for_purpose(what, **how):
    return setup(what, chained(c.server(MIDDLE, HOST, **how)), NO_PURPOSE)


def wrong_purposes():
    def authority_for(purpose):
        return c.authority(ROOT, "Intermediate", more=[(x509.ExtendedKeyUsage([purpose]), False)])
    client_root = c.authority(more=[(x509.ExtendedKeyUsage([ExtendedKeyUsageOID.CLIENT_AUTH]), False)])
    return [
        for_purpose("for clients", purposes=(ExtendedKeyUsageOID.CLIENT_AUTH,)),
        for_purpose("for signing code", purposes=(ExtendedKeyUsageOID.CODE_SIGNING,)),
        for_purpose("for mail", purposes=(ExtendedKeyUsageOID.EMAIL_PROTECTION,)),
        for_purpose("for OCSP answers", purposes=(ExtendedKeyUsageOID.OCSP_SIGNING,)),
        for_purpose("for any purpose, but not by name for servers", purposes=(ExtendedKeyUsageOID.ANY_EXTENDED_KEY_USAGE,)),
        for_purpose("a key for signing revocation lists only", usages=("crl_sign",)),
        below("an authority for clients", authority_for(ExtendedKeyUsageOID.CLIENT_AUTH), NO_PURPOSE),
        below("an authority for signing code", authority_for(ExtendedKeyUsageOID.CODE_SIGNING), NO_PURPOSE),
        setup("a root for clients", [c.server(client_root, HOST)], NO_PURPOSE, trusted=[client_root]),
    ]


def keyed(what, kind, expected):
    return setup(what, chained(c.server(MIDDLE, HOST, kind=kind)), expected, newest=SSL.TLS1_2_VERSION, lax=TAKEN)


def weak_authority(what, expected, **how):
    return below(what, c.authority(ROOT, "Intermediate", **how), expected, lax=TAKEN)


def weak_root(what, kind):
    root = c.authority(common_name="Root", kind=kind)
    return setup(what, [c.server(root, HOST)], WEAK_CA_KEY, trusted=[root], lax=TAKEN)


def weak_keys():
    sha1, md5, rsa_middle = hashes.SHA1(), hashes.MD5(), c.authority(ROOT, "RSA", kind=2048)
    rsa_root = c.authority(common_name="Root", kind=2048)
    def signed(what, digest):
        return setup(what, [c.server(rsa_middle, HOST, digest=digest), rsa_middle], WEAK_DIGEST, lax=TAKEN)
    def signed_authority(what, digest):
        middle = c.authority(rsa_root, "Intermediate", digest=digest)
        return below(what, middle, WEAK_DIGEST, trusted=[rsa_root], lax=TAKEN)
    return [
        keyed("RSA with 512 bits", 512, WEAK_KEY),
        keyed("RSA with 1024 bits", 1024, WEAK_KEY),
        keyed("RSA with 1536 bits", 1536, WEAK_KEY),
        keyed("DSA with 1024 bits", "DSA", INSECURE),
        keyed("the curve secp192r1", "SECP192R1", INSECURE),
        keyed("the curve sect163k1", "SECT163K1", INSECURE),
        keyed("the curve secp224r1", "SECP224R1", INSECURE),
        keyed("the curve secp256k1", "SECP256K1", INSECURE),
        weak_authority("an authority's RSA with 512 bits", WEAK_CA_KEY, kind=512),
        weak_authority("an authority's RSA with 1024 bits", WEAK_CA_KEY, kind=1024),
        weak_authority("an authority's curve secp192r1", WEAK_CA_KEY, kind="SECP192R1"),
        weak_root("a root's RSA with 1024 bits", 1024),
        weak_root("a root's curve secp192r1", "SECP192R1"),
        signed("signed with MD5", md5),
        signed("signed with SHA-1", sha1),
        setup("signed with ECDSA and SHA-1", chained(c.server(MIDDLE, HOST, digest=sha1)), WEAK_DIGEST, lax=TAKEN),
        signed_authority("an authority signed with MD5", md5),
        signed_authority("an authority signed with SHA-1", sha1),
    ]


def spoken(what, *, chain=None, libcurl=REFUSED, lax=TAKEN, version=SSL.TLS1_2_VERSION, ciphers="ALL"):
    return setup(what, chained(PROPER) if chain is None else chain, INSECURE, libcurl, oldest=version, newest=version,
                 ciphers=ciphers, lax=lax)


def weak_protocols():
    rsa = chained(c.server(MIDDLE, HOST, kind=2048, common_name="RSA server"))
    return [
        spoken("TLS 1.0", version=SSL.TLS1_VERSION),
        spoken("TLS 1.1", version=SSL.TLS1_1_VERSION),
        spoken("ECDHE, AES-CBC with SHA-1", libcurl=TAKEN, ciphers="ECDHE-ECDSA-AES128-SHA"),
        spoken("ECDHE, AES-CBC with SHA-256", libcurl=TAKEN, ciphers="ECDHE-ECDSA-AES128-SHA256"),
        spoken("ECDHE, AES-CBC with SHA-384", libcurl=TAKEN, ciphers="ECDHE-ECDSA-AES256-SHA384"),
        spoken("ECDHE, Camellia-CBC", ciphers="ECDHE-ECDSA-CAMELLIA128-SHA256"),
        spoken("ECDHE, AES-CCM with a short tag", ciphers="ECDHE-ECDSA-AES128-CCM8"),
        spoken("ECDHE, no encryption", ciphers="ECDHE-ECDSA-NULL-SHA"),
        spoken("RSA key exchange, AES-GCM", libcurl=TAKEN, chain=rsa, ciphers="AES128-GCM-SHA256"),
        spoken("RSA key exchange, AES-CBC", libcurl=TAKEN, chain=rsa, ciphers="AES128-SHA"),
        spoken("RSA key exchange, no encryption", chain=rsa, ciphers="NULL-SHA256"),
        spoken("DHE, AES-GCM", libcurl=TAKEN, chain=rsa, ciphers="DHE-RSA-AES128-GCM-SHA256"),
        spoken("DHE, AES-CBC", libcurl=TAKEN, chain=rsa, ciphers="DHE-RSA-AES128-SHA256"),
        spoken("DHE, ChaCha20", libcurl=TAKEN, chain=rsa, ciphers="DHE-RSA-CHACHA20-POLY1305"),
        spoken("DH without a certificate", chain=[], lax=REFUSED, ciphers="ADH-AES128-GCM-SHA256"),
        spoken("ECDH without a certificate", chain=[], lax=REFUSED, ciphers="AECDH-AES128-SHA"),
    ]


def said(what, *records):
    return Setup(what, s.saying(*records), INSECURE, REFUSED)


def broken_handshakes():
    proper, tls12 = s.context(chained(PROPER)), s.context(chained(PROPER), newest=SSL.TLS1_2_VERSION)
    return [
        said("SSL 2", b"\x80\x0b\x04\x00\x01\x00\x02\x00\x00\x00\x00\x00\x00"),
        said("SSL 3", s.hello(version=0x0300, suite=0x002F, extensions=b"")),
        said("a version that does not exist", s.hello(version=0x0305)),
        said("TLS 1.2 from a server that marks it as a downgrade", s.hello(random=bytes(24) + b"DOWNGRD\x01")),
        said("RC4, which was not offered", s.hello(suite=0x0005)),
        said("3DES, which was not offered", s.hello(suite=0x000A)),
        said("export-grade RC4, which was not offered", s.hello(suite=0x0003)),
        said("compression", s.hello(compression=1)),
        said("no secure renegotiation", s.hello(extensions=b"")),
        said("an extension that was not asked for", s.hello(extensions=b"\x12\x34\x00\x00")),
        said("plain HTTP", s.REPLY),
        said("another protocol", b"SSH-2.0-OpenSSH_9.2\r\n"),
        said("garbage", bytes(range(255, -1, -1))),
        said("a record of an impossible length", b"\x16\x03\x03\xff\xff" + bytes(65535)),
        said("an alert at once", s.alert(40)),
        said("nothing"),
        said("a hello that breaks off", s.hello()[:20]),
        said("a hello, and nothing after it", s.hello()),
        said("an alert after the hello", s.hello(), s.alert(80)),
        said("application data before the handshake is done", s.hello(), s.record(23, s.REPLY)),
        Setup("the client's own hello", s.echoing, INSECURE, REFUSED),
        Setup("a reset", s.resetting, INSECURE, REFUSED),
        Setup("a second handshake before the reply", s.renegotiating(tls12), LOST, TAKEN),
        Setup("a reply of no stated length that ends without TLS's end", s.truncating(proper), TAKEN, TAKEN),
    ]


def stapled(what, answer, expected, libcurl, leaf=None):
    """The same in both versions of TLS, whose handshakes carry an answer in different places."""
    return [setup(f"{what}, TLS 1.{version - SSL.TLS1_VERSION}", chained(leaf or PROPER), expected, libcurl, staple=answer,
                  oldest=version, newest=version) for version in (SSL.TLS1_2_VERSION, SSL.TLS1_3_VERSION)]


def bad_staples():
    other = c.server(MIDDLE, HOST, common_name="Other")
    must = c.server(MIDDLE, HOST, more=[c.MUST_STAPLE])
    impostor = c.authority(STRANGER, "Intermediate", kind="SECP384R1")
    changed = bytearray(c.staple(PROPER, MIDDLE))
    changed[-1] ^= 1
    answers = {
        "revoked": c.staple(PROPER, MIDDLE, "REVOKED"),
        "revoked, in an answer that is stale": c.staple(PROPER, MIDDLE, "REVOKED", valid=(-3, -2)),
        "not known to the authority": c.staple(PROPER, MIDDLE, "UNKNOWN"),
        "a stale answer": c.staple(PROPER, MIDDLE, valid=(-3, -0.01)),
        "an answer of tomorrow": c.staple(PROPER, MIDDLE, valid=(1, 2)),
        "an answer without an end": c.staple(PROPER, MIDDLE, valid=(-1, None)),
        "an answer about another certificate": c.staple(other, MIDDLE),
        "an answer about another authority's certificate": c.staple(PROPER, ROOT, responder=MIDDLE),
        "an answer signed with another key": c.staple(PROPER, MIDDLE, responder=impostor),
        "an answer that was changed": bytes(changed),
        "an answer by the server itself": c.staple(PROPER, MIDDLE, responder=PROPER),
        "an answer by a responder of another authority":
            c.staple(PROPER, MIDDLE, responder=c.server(STRANGER, **c.RESPONDER)),
        "an answer by a responder that has expired":
            c.staple(PROPER, MIDDLE, responder=c.server(MIDDLE, valid=(-9, -1), **c.RESPONDER)),
        "an answer that cannot be read": b"no answer at all",
        "an answer that breaks off": c.staple(PROPER, MIDDLE)[:-10],
        "the authority cannot say": c.refusal("TRY_LATER"),
    }
    rows = [row for what, answer in answers.items()
            for row in stapled(what, answer, REVOKED if what.startswith("revoked") else BAD_STAPLE, TAKEN)]
    return [*rows, *stapled("must be stapled, but is not", None, NO_STAPLE, TAKEN, must),
            *stapled("must be stapled, with a stale answer", c.staple(must, MIDDLE, valid=(-3, -2)), BAD_STAPLE, TAKEN, must)]


def strange_authorities():
    strangers = s.answering(s.context([c.server(STRANGER, HOST)]))
    return [
        Setup("an authority that only OpenSSL's configuration trusts", strangers, NO_ISSUER, REFUSED,
              environment="configured authority"),
        Setup("an authority that only SSL_CERT_FILE trusts", strangers, NO_ISSUER, REFUSED,
              environment="SSL_CERT_FILE"),
    ]


def good_in_spite_of_the_environment():
    return [
        Setup("TLS 1.2, where OpenSSL's configuration demands TLS 1.3 with another curve and signature",
              s.answering(s.context(chained(PROPER), newest=SSL.TLS1_2_VERSION)), TAKEN, REFUSED,
              environment="strict"),
        Setup("SSLKEYLOGFILE names a file", s.answering(s.context(chained(PROPER))), TAKEN, KEYS_WRITTEN,
              environment="SSLKEYLOGFILE"),
    ]


def good():
    must = c.server(MIDDLE, HOST, more=[c.MUST_STAPLE])
    rsa = c.server(MIDDLE, HOST, kind=2048, common_name="RSA server")
    responder = c.server(MIDDLE, **c.RESPONDER)
    own = c.server(None, HOST)
    crossed = c.authority(STRANGER, "Root")
    by_name = {host: s.context(chained(c.server(MIDDLE, host))) for host in ("else.test", HOST)}
    big = c.authority(common_name="Big", kind=4096)
    old_middle = c.authority(ROOT, "Old", valid=(-9, -1))
    line = [MIDDLE]
    for number in range(5):
        line.insert(0, c.authority(line[0], "Link %d" % number))

    def fine(what, chain, **how):
        return setup(what, chain, TAKEN, TAKEN, **how)
    return [
        fine("a curve's key", chained(PROPER)),
        fine("an RSA key", chained(rsa)),
        fine("the curve P-384", chained(c.server(MIDDLE, HOST, kind="SECP384R1"))),
        fine("RSA with 4096 bits at the authority", [c.server(big, HOST)], trusted=[big]),
        fine("only TLS 1.3", chained(PROPER), oldest=SSL.TLS1_3_VERSION),
        fine("only TLS 1.2, AES-128-GCM", chained(PROPER), newest=SSL.TLS1_2_VERSION,
             ciphers="ECDHE-ECDSA-AES128-GCM-SHA256"),
        fine("only TLS 1.2, AES-256-GCM with RSA", chained(rsa), newest=SSL.TLS1_2_VERSION,
             ciphers="ECDHE-RSA-AES256-GCM-SHA384"),
        fine("only TLS 1.2, ChaCha20", chained(PROPER), newest=SSL.TLS1_2_VERSION, ciphers="ECDHE-ECDSA-CHACHA20-POLY1305"),
        fine("one of several hosts", chained(c.server(MIDDLE, "else.test", HOST, address("127.0.0.1")))),
        fine("a host in capitals", chained(c.server(MIDDLE, "Service.TEST"))),
        Setup("one of several hosts on one address", s.choosing_by_name(by_name), TAKEN, TAKEN),
        fine("a wildcard", chained(c.server(MIDDLE, "*.shop.test")), host="service.shop.test"),
        fine("an international host, encoded", chained(c.server(MIDDLE, "xn--bcher-kva.test")),
             host="xn--bcher-kva.test"),
        fine("a dot after the host in the URL", chained(PROPER), host=HOST + "."),
        fine("an address", chained(c.server(MIDDLE, address("127.0.0.1"))), host="127.0.0.1"),
        fine("no extended purposes", chained(c.server(MIDDLE, HOST, purposes=()))),
        fine("an unknown extension that is not critical",
             chained(c.server(MIDDLE, HOST, more=[c.unknown_extension(False)]))),
        fine("no intermediate authority", [c.server(ROOT, HOST)]),
        fine("the root is sent along", [*chained(PROPER), ROOT]),
        fine("a chain in the wrong order", [PROPER, ROOT, MIDDLE]),
        fine("certificates that do not belong to the chain", [PROPER, STRANGER, old_middle, MIDDLE]),
        fine("seven authorities", [c.server(line[0], HOST), *line]),
        fine("a root that an unknown one has cross-signed", [PROPER, MIDDLE, crossed]),
        fine("a cross-signed root, for those who trust the other", [PROPER, MIDDLE, crossed], trusted=[STRANGER]),
        fine("the intermediate authority is what is trusted", [PROPER], trusted=[MIDDLE]),
        fine("the certificate itself is what is trusted", [own], trusted=[own]),
        fine("the same, with an OCSP answer", [own], trusted=[own], staple=c.staple(own, own)),
        Setup("an authority that may vouch for the host only", constrained(
            "", [HOST], TAKEN, permitted=[x509.DNSName(HOST)]).meet, TAKEN, TAKEN),
        *(row for what, answer, leaf in [
            ("an answer of the authority", c.staple(PROPER, MIDDLE), PROPER),
            ("an answer of its responder", c.staple(PROPER, MIDDLE, responder=responder), PROPER),
            ("an answer hashed with SHA-256", c.staple(PROPER, MIDDLE, id_hash=hashes.SHA256()), PROPER),
            ("must be stapled, and is", c.staple(must, MIDDLE), must),
        ] for row in stapled(what, answer, TAKEN, TAKEN, leaf)),
    ]


BAD = {
    "Names": wrong_names(),
    "Dates": wrong_dates(),
    "Chains": wrong_chains(),
    "Purposes": wrong_purposes(),
    "Keys and signatures": weak_keys(),
    "Protocols and ciphers": weak_protocols(),
    "Handshakes": broken_handshakes(),
    "Stapled OCSP answers": bad_staples(),
    "Authorities of the environment": strange_authorities(),
}
GOOD = {
    "Good set-ups": good(),
    "Good set-ups in a special environment": good_in_spite_of_the_environment(),
}
