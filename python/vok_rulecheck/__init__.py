# SPDX-License-Identifier: Apache-2.0

"""The rule-check protocol: its messages, and their texts.

RuleService_pb2 has the message classes, and converter the functions that render their values.
read_delimited and write_delimited read and write messages prefixed with their length.

>>> from vok_rulecheck import RuleService_pb2 as pb, converter
>>> place = pb.Reference(type=pb.Reference.FILE, name="fifo.v:12")
>>> converter.to_html(pb.Arg(ref=place))
'fifo.v:12'
"""

import sys as _sys


def _schema_is_registered():
    pools = _sys.modules.get("google.protobuf.descriptor_pool")
    try:
        return pools is not None and bool(pools.Default().FindFileByName("RuleService.proto"))
    except KeyError:
        return False


# The library that converter loads registers the schema too. Messages imported later share its
# classes, which is many times as fast. Messages imported earlier have classes of their own; the
# ones here must then share those, or CopyFrom from one to the other would fail.
if _schema_is_registered():
    from . import RuleService_pb2, converter
else:
    from . import converter, RuleService_pb2
from .delimited import read_delimited, write_delimited

__all__ = ["RuleService_pb2", "converter", "read_delimited", "write_delimited"]
