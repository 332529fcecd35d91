#!/usr/bin/python3
"""The servers for a test in another language, until the end of its input.

Usage: tests/update/serve.py FOLDER

FOLDER/files is served; the rest of FOLDER is for certificates. The first line of the output is a JSON object: where the
store with the trusted authority is, and the address of each server. After that, each line of the input is an object,
and each is answered with a line.
"""

from __future__ import annotations

import dataclasses
import json
import pathlib
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent))

from update.authority import OTHER_HOST, Authority, self_signed  # noqa: E402
from update.proxy import Proxy  # noqa: E402
from update.server import Behavior, UpdateServer  # noqa: E402


def make_servers(folder: pathlib.Path, authority: Authority) -> dict[str, UpdateServer]:
    files = folder / "files"
    files.mkdir(exist_ok=True)
    certificates = {
        "good": authority.certificate("good"),
        "expired": authority.certificate("expired", has_expired=True),
        "other host": authority.certificate("other-host", OTHER_HOST),
        "self-signed": self_signed(folder, "self-signed"),
        "unknown authority": Authority(folder, "stranger").certificate("strangers"),
        "plain": None,
    }
    return {name: UpdateServer(files, certificate) for name, certificate in certificates.items()}


def answer(order: dict, servers: dict[str, UpdateServer], proxy: Proxy) -> object:
    server = servers[order.get("server", "good")]
    if order["do"] == "behave":
        behavior = dict(order["behavior"])
        headers = tuple((name, value) for name, value in behavior.pop("headers", {}).items())
        server.behave(order["path"], Behavior(**behavior, headers=headers))
        return None
    if order["do"] == "requests":
        return [dataclasses.asdict(request) for request in server.requests]
    if order["do"] == "left":
        return server.left
    if order["do"] == "chunks":
        return server.chunks
    if order["do"] == "proxied":
        return proxy.targets
    raise ValueError(f"no such order: {order}")


def main() -> None:
    folder = pathlib.Path(sys.argv[1])
    authority = Authority(folder)
    servers, proxy = make_servers(folder, authority), Proxy()
    addresses = {name: server.address for name, server in servers.items()}
    print(json.dumps({"store": str(authority.store), "servers": addresses, "proxy": proxy.address}), flush=True)
    for line in sys.stdin:
        print(json.dumps(answer(json.loads(line), servers, proxy)), flush=True)


if __name__ == "__main__":
    main()
