schema=$HOME/rulecheck/share/vok/rulecheck

# A request from its text, and back.
protoc -I "$schema" --encode=vok.rulecheck.Request "$schema/RuleService.proto" < request.txtpb > request.pb
protoc -I "$schema" --decode=vok.rulecheck.Request "$schema/RuleService.proto" < request.pb

# A message from a stream, without the length before it, which is one byte here.
tail -c +2 stream | protoc -I "$schema" --decode=vok.rulecheck.Request "$schema/RuleService.proto"

# Bytes of a message of unknown type, by the numbers of its fields.
protoc --decode_raw < request.pb
