"""Old code pages, document streams and the order of languages, by the C library kxstr.

    >>> import kxstr
    >>> kxstr.decode(b"\\x9fe\\xe7tina", 852)
    'čeština'
    >>> b"\\x9fe\\xe7tina".decode("kx-852")
    'čeština'
    >>> kxstr.compare("chata", "cukr", "cs")
    1

The library is looked for when it is first needed: the file, or the folder, that KXSTR_LIBRARY names, else as the system
finds libraries. Importing this package registers the codecs.

Threads: every function may be called by several at once. Calls release the interpreter's lock.
"""
from ._codecs import register as _register
from ._detect import Guess, detect, detect_all
from ._native import LibraryNotFound
from ._order import compare, sort_key
from ._stream import Code, Fault, Kind, strip, walk
from ._text import decode, encode

__version__ = "1.0.0"

__all__ = [
    "Code",
    "Fault",
    "Guess",
    "Kind",
    "LibraryNotFound",
    "compare",
    "decode",
    "detect",
    "detect_all",
    "encode",
    "sort_key",
    "strip",
    "walk",
]

_register()
