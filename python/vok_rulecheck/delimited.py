# SPDX-License-Identifier: Apache-2.0

"""Messages prefixed with their length, for files and connections that carry several."""

from typing import BinaryIO, Optional, Type, TypeVar

from google.protobuf.message import DecodeError, Message

M = TypeVar("M", bound=Message)


def write_delimited(stream: BinaryIO, message: Message) -> None:
    """Write a message prefixed with its length.

    Raises EncodeError, with nothing written, if a required field is missing. The stream must write
    all bytes that it is given: use socket.makefile("wb") for a socket.

    >>> import io
    >>> from vok_rulecheck import RuleService_pb2 as pb, write_delimited
    >>> stream = io.BytesIO()
    >>> write_delimited(stream, pb.Link(link_text="L"))
    >>> stream.getvalue()
    b'\\x03\\n\\x01L'
    """
    body = message.SerializeToString()
    length = len(body)
    prefix = bytearray()
    while length > 0x7F:
        prefix.append(length & 0x7F | 0x80)
        length >>= 7
    prefix.append(length)
    stream.write(bytes(prefix) + body)


def read_delimited(stream: BinaryIO, message_class: Type[M], max_bytes: int = 1 << 20) -> Optional[M]:
    """Read the next message of a class; None at the end of the stream.

    Raises DecodeError if the message is longer than max_bytes, cut off, malformed or incomplete.
    Stop reading then: the start of the next message is unknown.

    >>> import io
    >>> from vok_rulecheck import RuleService_pb2 as pb, read_delimited
    >>> stream = io.BytesIO(b"\\x03\\n\\x01L")
    >>> read_delimited(stream, pb.Link).link_text
    'L'
    >>> read_delimited(stream, pb.Link)
    """
    length = _read_length(stream)
    if length is None:
        return None
    if length > max_bytes:
        raise DecodeError(f"a message of {length} bytes exceeds the limit of {max_bytes}")
    message = parse(message_class, _read_exactly(stream, length))
    if not message.IsInitialized():
        raise DecodeError(f"required fields are missing: {', '.join(message.FindInitializationErrors())}")
    return message


def parse(message_class: Type[M], data: bytes) -> M:
    """Return the message that the bytes encode; raises DecodeError, whatever the runtime raises."""
    try:
        return message_class.FromString(data)
    except UnicodeDecodeError as error:  # Python's pure implementation, for strings that are not UTF-8
        raise DecodeError(str(error)) from error


def _read_length(stream: BinaryIO) -> Optional[int]:
    length = 0
    for shift in range(0, 70, 7):
        byte = stream.read(1)
        if not byte and shift == 0:
            return None
        if not byte:
            raise DecodeError("the stream ends within a length")
        length |= (byte[0] & 0x7F) << shift
        if byte[0] < 0x80:
            return length
    raise DecodeError("a length of more than ten bytes")


def _read_exactly(stream: BinaryIO, length: int) -> bytes:
    body = bytearray()
    while len(body) < length:
        part = stream.read(length - len(body))
        if not part:
            raise DecodeError(f"the stream ends after {len(body)} of {length} bytes")
        body += part
    return bytes(body)
