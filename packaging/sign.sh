#!/usr/bin/env bash
# Signs a program, an uninstaller or an installer in place. Usage: packaging/sign.sh FILE
#
# QUILLMONT_CERTIFICATE                the certificate with its key, a PKCS#12 file; without it nothing is signed
# QUILLMONT_CERTIFICATE_PASSWORD_FILE  a file with its password, if it has one
# QUILLMONT_TIMESTAMP_URL              the time stamp authority (RFC 3161); the signature then outlives the certificate
set -euo pipefail

if [[ -z "${QUILLMONT_CERTIFICATE:-}" ]]; then
    exit 0
fi
options=(-pkcs12 "$QUILLMONT_CERTIFICATE" -h sha256 -n "Quillmont PRO")
if [[ -n "${QUILLMONT_CERTIFICATE_PASSWORD_FILE:-}" ]]; then
    options+=(-readpass "$QUILLMONT_CERTIFICATE_PASSWORD_FILE")
fi
if [[ -n "${QUILLMONT_TIMESTAMP_URL:-}" ]]; then
    options+=(-ts "$QUILLMONT_TIMESTAMP_URL")
fi
signed="$(mktemp -u "$1.XXXXXX")"
if ! report="$(osslsigncode sign "${options[@]}" -in "$1" -out "$signed" 2>&1 </dev/null)"; then
    rm -f "$signed"
    printf '%s: not signed\n%s\n' "$1" "$report" >&2
    exit 1
fi
mv "$signed" "$1"
