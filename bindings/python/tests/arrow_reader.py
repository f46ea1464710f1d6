"""Arrow's C structures as a consumer sees them, walked with ctypes alone."""

import ctypes
import struct
from typing import Any, Dict, List, NamedTuple, Optional, Tuple


class Schema(ctypes.Structure):
    pass


class Array(ctypes.Structure):
    pass


class Stream(ctypes.Structure):
    pass


Schema._fields_ = [
    ("format", ctypes.c_char_p),
    ("name", ctypes.c_char_p),
    ("metadata", ctypes.c_void_p),
    ("flags", ctypes.c_int64),
    ("n_children", ctypes.c_int64),
    ("children", ctypes.POINTER(ctypes.POINTER(Schema))),
    ("dictionary", ctypes.POINTER(Schema)),
    ("release", ctypes.CFUNCTYPE(None, ctypes.POINTER(Schema))),
    ("private_data", ctypes.c_void_p),
]
Array._fields_ = [
    ("length", ctypes.c_int64),
    ("null_count", ctypes.c_int64),
    ("offset", ctypes.c_int64),
    ("n_buffers", ctypes.c_int64),
    ("n_children", ctypes.c_int64),
    ("buffers", ctypes.POINTER(ctypes.c_void_p)),
    ("children", ctypes.POINTER(ctypes.POINTER(Array))),
    ("dictionary", ctypes.POINTER(Array)),
    ("release", ctypes.CFUNCTYPE(None, ctypes.POINTER(Array))),
    ("private_data", ctypes.c_void_p),
]
GET_SCHEMA = ctypes.CFUNCTYPE(ctypes.c_int, ctypes.POINTER(Stream), ctypes.POINTER(Schema))
GET_NEXT = ctypes.CFUNCTYPE(ctypes.c_int, ctypes.POINTER(Stream), ctypes.POINTER(Array))
GET_ERROR = ctypes.CFUNCTYPE(ctypes.c_void_p, ctypes.POINTER(Stream))
RELEASE = ctypes.CFUNCTYPE(None, ctypes.POINTER(Stream))
Stream._fields_ = [
    ("get_schema", GET_SCHEMA),
    ("get_next", GET_NEXT),
    ("get_last_error", GET_ERROR),
    ("release", RELEASE),
    ("private_data", ctypes.c_void_p),
]

NAME = b"arrow_array_stream"
_pointer_in = ctypes.pythonapi.PyCapsule_GetPointer
_pointer_in.restype = ctypes.c_void_p
_pointer_in.argtypes = [ctypes.py_object, ctypes.c_char_p]
_capsule_of = ctypes.pythonapi.PyCapsule_New
_capsule_of.restype = ctypes.py_object
_capsule_of.argtypes = [ctypes.c_void_p, ctypes.c_char_p, ctypes.c_void_p]


class Failed(Exception):
    pass


class Field(NamedTuple):
    name: str
    format: str
    metadata: Dict[str, str]


class Read(NamedTuple):
    """All that a stream gives: each batch has a list of values for each of its columns."""

    fields: List[Field]
    metadata: Dict[str, str]
    batches: List[List[List[Any]]]

    def column(self, name: str) -> List[Any]:
        place = [field.name for field in self.fields].index(name)
        return [value for batch in self.batches for value in batch[place]]


def stream_in(capsule: object) -> Stream:
    """The stream where it stands in the capsule; not moved out."""
    address = _pointer_in(capsule, NAME)
    assert address
    return Stream.from_address(address)


def capsule_around(stream: Stream, name: bytes = NAME) -> object:
    """A capsule that owns nothing; stream and name have to outlive it."""
    return _capsule_of(ctypes.addressof(stream), name, None)


def _metadata(address: Optional[int]) -> Dict[str, str]:
    if not address:
        return {}
    place = address

    def number() -> int:
        nonlocal place
        value: int = struct.unpack("=i", ctypes.string_at(place, 4))[0]
        place += 4
        return value

    def text() -> str:
        nonlocal place
        size = number()
        place += size
        return ctypes.string_at(place - size, size).decode()

    return {text(): text() for _ in range(number())}


def _texts(array: Array, size: int) -> List[bytes]:
    places = ctypes.string_at(
        array.buffers[1] + array.offset * size, (array.length + 1) * size
    )
    ends = struct.unpack(f"={array.length + 1}{'i' if size == 4 else 'q'}", places)
    data = ctypes.string_at(array.buffers[2], ends[-1]) if ends[-1] else b""
    return [data[begin:end] for begin, end in zip(ends, ends[1:])]


def _values(array: Array, format: str) -> List[Any]:
    if format == "b":
        bits = ctypes.string_at(array.buffers[1], (array.offset + array.length + 7) // 8)
        places = range(array.offset, array.offset + array.length)
        return [bits[place // 8] >> place % 8 & 1 == 1 for place in places]
    values = _texts(array, 8 if format in "UZ" else 4)
    return [value.decode() for value in values] if format in "uU" else list(values)


def _check(stream: Stream, error: int) -> None:
    if error:
        text = stream.get_last_error(ctypes.byref(stream))
        raise Failed(ctypes.string_at(text).decode() if text else error)


def _schema(stream: Stream) -> Tuple[List[Field], Dict[str, str]]:
    schema = Schema()
    _check(stream, stream.get_schema(ctypes.byref(stream), ctypes.byref(schema)))
    children = [schema.children[i].contents for i in range(schema.n_children)]
    fields = [Field(c.name.decode(), c.format.decode(), _metadata(c.metadata)) for c in children]
    metadata = _metadata(schema.metadata)
    assert schema.format == b"+s"
    schema.release(ctypes.byref(schema))
    return fields, metadata


def read(capsule: object) -> Read:
    """Reads a stream to its end. The capsule still owns it."""
    stream = stream_in(capsule)
    fields, metadata = _schema(stream)
    batches: List[List[List[Any]]] = []
    while True:
        batch = Array()
        _check(stream, stream.get_next(ctypes.byref(stream), ctypes.byref(batch)))
        if not batch.release:
            return Read(fields, metadata, batches)
        columns = [batch.children[i].contents for i in range(batch.n_children)]
        batches.append([_values(c, field.format) for c, field in zip(columns, fields)])
        batch.release(ctypes.byref(batch))
