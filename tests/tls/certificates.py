"""Keys, certificates and OCSP answers, good and bad."""
import datetime
import functools
import warnings
from dataclasses import dataclass

from cryptography import x509
from cryptography.hazmat.primitives import hashes, serialization
from cryptography.hazmat.primitives.asymmetric import dsa, ec, rsa
from cryptography.utils import CryptographyDeprecationWarning
from cryptography.x509 import ocsp
from cryptography.x509.oid import ExtendedKeyUsageOID, ExtensionOID, NameOID

warnings.simplefilter("ignore", CryptographyDeprecationWarning)  # about weak digests, which are wanted here
NOW = datetime.datetime.utcnow().replace(microsecond=0)
USAGES = ("digital_signature", "content_commitment", "key_encipherment", "data_encipherment", "key_agreement",
          "key_cert_sign", "crl_sign", "encipher_only", "decipher_only")
SERVER = ExtendedKeyUsageOID.SERVER_AUTH


@dataclass(frozen=True)
class Identity:
    certificate: x509.Certificate
    key: object

    @property
    def subject(self):
        return self.certificate.subject


@functools.cache
def key(kind, owner):
    """A key for each owner. A number is the length of an RSA key; otherwise it is a curve or "DSA"."""
    if isinstance(kind, int):
        return rsa.generate_private_key(65537, kind)
    return dsa.generate_private_key(1024) if kind == "DSA" else ec.generate_private_key(getattr(ec, kind)())


def days(count):
    return NOW + datetime.timedelta(days=count)


def usage(*allowed):
    return x509.KeyUsage(**{name: name in allowed for name in USAGES}), True


def make(common_name, issuer, extensions, *, kind="SECP256R1", valid=(-10, 10), digest=hashes.SHA256(), signer=None):
    """Signed by `issuer`, or by itself. `signer`: the key that signs instead of the issuer's."""
    own = key(kind, common_name)
    subject = x509.Name([x509.NameAttribute(NameOID.COMMON_NAME, common_name)])
    signer = signer or (issuer.key if issuer else own)
    issuer_key = issuer.key if issuer else own
    builder = x509.CertificateBuilder(
        issuer.subject if issuer else subject, subject, own.public_key(), x509.random_serial_number(),
        days(valid[0]), days(valid[1]))
    identifiers = [(x509.SubjectKeyIdentifier.from_public_key(own.public_key()), False),
                   (x509.AuthorityKeyIdentifier.from_issuer_public_key(issuer_key.public_key()), False)]
    for extension, critical in [*extensions, *identifiers]:
        builder = builder.add_extension(extension, critical)
    return Identity(builder.sign(signer, digest), own)


def authority(issuer=None, common_name="Root", *, is_authority=True, length=None, usages=("key_cert_sign", "crl_sign"),
              more=(), **how):
    constraints = [(x509.BasicConstraints(is_authority, length), True)] if is_authority is not None else []
    return make(common_name, issuer, [*constraints, usage(*usages), *more], **how)


def names(*values):
    """Host names as they are written here, and addresses."""
    return x509.SubjectAlternativeName([
        value if isinstance(value, x509.GeneralName) else x509.DNSName._init_without_validation(value)
        for value in values])


def server(issuer, *hosts, common_name="Server", purposes=(SERVER,), usages=("digital_signature", "key_encipherment"),
           alternative=None, more=(), **how):
    """A server's certificate for `hosts`. `alternative`: an extension in their place."""
    extensions = [usage(*usages), *more]
    if alternative or hosts:
        extensions.append((alternative or names(*hosts), False))
    if purposes:
        extensions.append((x509.ExtendedKeyUsage(purposes), False))
    return make(common_name, issuer, extensions, **how)


def tampered(identity):
    """With one bit of the signature changed."""
    der = bytearray(identity.certificate.public_bytes(serialization.Encoding.DER))
    der[-1] ^= 1
    return Identity(x509.load_der_x509_certificate(bytes(der)), identity.key)


def unknown_extension(critical):
    return x509.UnrecognizedExtension(x509.ObjectIdentifier("1.3.6.1.4.1.55555.1"), b"\x05\x00"), critical


MUST_STAPLE = x509.TLSFeature([x509.TLSFeatureType.status_request]), False
RESPONDER = dict(purposes=(ExtendedKeyUsageOID.OCSP_SIGNING,), common_name="Responder")


def staple(leaf, issuer, status="GOOD", *, valid=(-1, 1), responder=None, id_hash=hashes.SHA1()):
    """The answer of `responder`, by default the issuer, about `leaf`."""
    revoked = status == "REVOKED"
    by = responder or issuer
    builder = ocsp.OCSPResponseBuilder().add_response(
        leaf.certificate, issuer.certificate, id_hash, getattr(ocsp.OCSPCertStatus, status), days(valid[0]),
        None if valid[1] is None else days(valid[1]), days(-1) if revoked else None,
        x509.ReasonFlags.key_compromise if revoked else None)
    builder = builder.responder_id(ocsp.OCSPResponderEncoding.NAME, by.certificate)
    if responder:
        builder = builder.certificates([responder.certificate])
    return builder.sign(by.key, hashes.SHA256()).public_bytes(serialization.Encoding.DER)


def refusal(status):
    """An OCSP answer that is none, such as TRY_LATER."""
    answer = ocsp.OCSPResponseBuilder.build_unsuccessful(getattr(ocsp.OCSPResponseStatus, status))
    return answer.public_bytes(serialization.Encoding.DER)
