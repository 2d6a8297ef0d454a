"""The pages as codecs of Python: "kx-895", "kx-iso-8859-2" and so on."""
from __future__ import annotations

import codecs
from functools import lru_cache
from typing import Any

from ._native import LibraryNotFound
from ._text import Form, decode_form, encode_form, form_of

_PREFIX = "kx-"


def _bytes(data: Any) -> bytes:
    return data if isinstance(data, bytes) else bytes(data)


@lru_cache(maxsize=None)
def _info(name: str, form: Form) -> codecs.CodecInfo:
    def encode(input: str, errors: str = "strict") -> tuple[bytes, int]:
        return encode_form(input, form, name, errors)

    def decode(input: Any, errors: str = "strict") -> tuple[str, int]:
        return decode_form(_bytes(input), form, name, errors, True)

    class Encoder(codecs.IncrementalEncoder):
        # Nothing waits for what follows: files do not say at the end that nothing does.
        def encode(self, input: str, final: bool = False) -> bytes:
            return encode_form(input, form, name, self.errors)[0]

    class Decoder(codecs.BufferedIncrementalDecoder):
        def _buffer_decode(self, input: Any, errors: str, final: bool) -> tuple[str, int]:
            return decode_form(_bytes(input), form, name, errors, final)

    class Writer(codecs.StreamWriter):
        def encode(self, input: str, errors: str = "strict") -> tuple[bytes, int]:
            return encode_form(input, form, name, errors)

    class Reader(codecs.StreamReader):
        def decode(self, input: Any, errors: str = "strict") -> tuple[str, int]:
            return decode_form(_bytes(input), form, name, errors, False)

    return codecs.CodecInfo(
        name=name,
        encode=encode,
        decode=decode,
        incrementalencoder=Encoder,
        incrementaldecoder=Decoder,
        streamreader=Reader,
        streamwriter=Writer,
    )


def _search(name: str) -> codecs.CodecInfo | None:
    # Python has made it small and, from 3.9 on, its hyphens underscores.
    page = name.replace("_", "-").replace(" ", "-")
    if not page.startswith(_PREFIX):
        return None
    try:
        return _info(page, form_of(page[len(_PREFIX) :]))
    except LibraryNotFound:
        raise
    except LookupError:
        return None


def register() -> None:
    codecs.register(_search)
