# Signatures for packaging/release and packaging/renew. Source it after scripts/common.sh.

secret_key=       # minisign's file; empty: nothing is signed
public_keys=()    # one of which must trust what is signed
signed_at=$(date -u +%Y-%m-%dT%H:%M:%SZ) # what the feed tells

# take_signing_option NAME VALUE: one of the options that both scripts have. False when it is another.
take_signing_option() {
    case $1 in
    --secret-key) secret_key=$(realpath -m "$2") ;;
    --public-key) public_keys+=("$2") ;;
    --signed-at) signed_at=$2 ;;
    *) return 1 ;;
    esac
}

require_secret_key() {
    [ -z "$secret_key" ] || [ -r "$secret_key" ] || fail "$secret_key can't be read."
}

is_trusted() {
    local key
    for key in "${public_keys[@]}"; do
        ! minisign -V -q -P "$key" -m "$1" >/dev/null 2>&1 || return 0
    done
    [ ${#public_keys[@]} -eq 0 ]
}

# sign FILE COMMENT: beside it. The key's password is asked for at a terminal alone. The same bytes for the same file and key.
sign() {
    local file=$1 comment=$2 input=/dev/null
    rm -f "$file.minisig"
    if [ -z "$secret_key" ]; then
        say "Not signed; by hand: minisign -S -s SECRET-KEY -m $(printf '%q' "$(basename "$file")") -t $(printf '%q' "$comment")"
        return
    fi
    [ -z "$at_terminal" ] || input=/dev/tty
    minisign -S -s "$secret_key" -m "$file" -t "$comment" <"$input" >&2 || fail "$file could not be signed."
    is_trusted "$file" || { rm "$file.minisig"; fail "None of the public keys belongs to $secret_key."; }
}

sign_feed() {
    sign "$1" "$(printf 'file:%s\tsignedAt:%s' "$(basename "$1")" "$signed_at")"
}
