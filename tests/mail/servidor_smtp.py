#!/usr/bin/python3
"""A local SMTP server for the tests, on 127.0.0.1 and a free port.

Prints {"porta": N} when it listens, then one JSON line per message it
accepts: envelope, login, raw bytes (base64) and what Python's e-mail package
reads in them (subject, charset, decoded body). Answers a chosen code to
RCPT or DATA instead when asked. Stops when its standard input closes, or by
itself after a minute.
"""
import argparse
import asyncio
import base64
import email
import email.header
import json
import socket
import sys

from aiosmtpd.smtp import SMTP, AuthResult


def escreve(obj):
    sys.stdout.write(json.dumps(obj) + "\n")
    sys.stdout.flush()


class Tratador:
    def __init__(self, recusa_rcpt, recusa_data):
        self.recusa_rcpt = recusa_rcpt
        self.recusa_data = recusa_data
        self.login = None

    async def handle_RCPT(self, server, session, envelope, address, rcpt_options):
        if self.recusa_rcpt:
            return self.recusa_rcpt
        envelope.rcpt_tos.append(address)
        return "250 OK"

    async def handle_DATA(self, server, session, envelope):
        if self.recusa_data:
            return self.recusa_data
        bruto = envelope.original_content or envelope.content
        msg = email.message_from_bytes(bruto)
        assunto = str(email.header.make_header(email.header.decode_header(msg.get("Subject", ""))))
        corpo = msg.get_payload(decode=True) or b""
        escreve({
            "de": envelope.mail_from,
            "para": envelope.rcpt_tos,
            "login": self.login,
            "bruto": base64.b64encode(bruto).decode(),
            "assunto": assunto,
            "tipo": msg.get_content_type(),
            "charset": msg.get_content_charset(),
            "corpo": base64.b64encode(corpo).decode(),
        })
        return "250 2.0.0 Mensagem aceita"


def main():
    p = argparse.ArgumentParser()
    p.add_argument("--recusa-rcpt", default="")
    p.add_argument("--recusa-data", default="")
    a = p.parse_args()
    tratador = Tratador(a.recusa_rcpt, a.recusa_data)

    def autentica(server, session, envelope, mechanism, auth_data):
        tratador.login = [auth_data.login.decode(), auth_data.password.decode()]
        return AuthResult(success=True)

    sock = socket.socket(socket.AF_INET, socket.SOCK_STREAM)
    sock.bind(("127.0.0.1", 0))
    sock.listen(8)
    porta = sock.getsockname()[1]

    async def servidor():
        loop = asyncio.get_running_loop()
        srv = await loop.create_server(
            lambda: SMTP(tratador, decode_data=False, hostname="teste.local", authenticator=autentica,
                         auth_require_tls=False),
            sock=sock)
        escreve({"porta": porta})
        fim = loop.run_in_executor(None, sys.stdin.read)
        try:
            await asyncio.wait_for(fim, timeout=60)
        except asyncio.TimeoutError:
            pass
        srv.close()
        await srv.wait_closed()

    asyncio.run(servidor())


if __name__ == "__main__":
    main()
