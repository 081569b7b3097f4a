"""Authenticode signatures, when a certificate is given by the environment."""

import os

from release import run


def configured():
    return bool(os.environ.get("QUORVEX_SIGN_KEY"))


def sign(release, *files):
    if not configured():
        return
    key = os.environ["QUORVEX_SIGN_KEY"]
    certificate = os.environ.get("QUORVEX_SIGN_CERTIFICATE")
    with_key = ["-certs", certificate, "-key", key] if certificate else ["-pkcs12", key]
    if os.environ.get("QUORVEX_SIGN_PASSWORD"):
        with_key += ["-pass", os.environ["QUORVEX_SIGN_PASSWORD"]]
    if os.environ.get("QUORVEX_SIGN_TIMESTAMP"):
        with_key += ["-ts", os.environ["QUORVEX_SIGN_TIMESTAMP"]]
    for path in files:
        signed = path.with_suffix(path.suffix + ".signed")
        run("osslsigncode", "sign", *with_key, "-h", "sha256", "-n", "Quorvex address lookup", "-in", path, "-out", signed)
        os.replace(signed, path)
        os.utime(path, (release.epoch, release.epoch))
