"""Reads forms with a parser of Python and tells as JSON what it has read. Prints "port N" when it listens.

usage: form.py werkzeug|aiohttp
"""

import hashlib
import json
import sys

PIECE = 1 << 16


def described(field, name, kind, size, digest):
    return {"field": field, "name": name, "type": kind, "size": size, "sha256": digest.hexdigest()}


def serve_werkzeug():
    from werkzeug.serving import make_server
    from werkzeug.wrappers import Request, Response

    def describe(field, upload):
        digest = hashlib.sha256()
        size = 0
        while piece := upload.stream.read(PIECE):
            digest.update(piece)
            size += len(piece)
        return described(field, upload.filename, upload.mimetype, size, digest)

    @Request.application
    def answer(request):
        fields = list(request.form.items(multi=True))
        files = [describe(field, upload) for field, upload in request.files.items(multi=True)]
        return Response(json.dumps({"fields": fields, "files": files}), mimetype="application/json")

    server = make_server("127.0.0.1", 0, answer)
    print("port", server.port, flush=True)
    server.serve_forever()


def serve_aiohttp():
    import asyncio

    from aiohttp import web

    async def describe(part):
        digest = hashlib.sha256()
        size = 0
        while piece := await part.read_chunk(PIECE):
            digest.update(piece)
            size += len(piece)
        return described(part.name, part.filename, part.headers.get("Content-Type"), size, digest)

    async def answer(request):
        fields = []
        files = []
        async for part in await request.multipart():
            if part.filename is None:
                fields.append((part.name, await part.text()))
            else:
                files.append(await describe(part))
        return web.json_response({"fields": fields, "files": files})

    async def run():
        app = web.Application()
        app.router.add_post("/", answer)
        runner = web.AppRunner(app)
        await runner.setup()
        site = web.TCPSite(runner, "127.0.0.1", 0)
        await site.start()
        print("port", runner.addresses[0][1], flush=True)
        await asyncio.Event().wait()

    asyncio.run(run())


{"werkzeug": serve_werkzeug, "aiohttp": serve_aiohttp}[sys.argv[1]]()
