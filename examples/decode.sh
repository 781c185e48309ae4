schema=$HOME/rulecheck/share/vok/rulecheck

# A request from its text, and back.
protoc -I "$schema" --encode=vok.rulecheck.Request "$schema/RuleService.proto" < request.txtpb > request.pb
protoc -I "$schema" --decode=vok.rulecheck.Request "$schema/RuleService.proto" < request.pb

# The first message of a stream that holds one: its length, here a byte, comes off.
tail -c +2 stream | protoc -I "$schema" --decode=vok.rulecheck.Request "$schema/RuleService.proto"

# Bytes of a message of unknown type, by the numbers of its fields.
protoc --decode_raw < request.pb
