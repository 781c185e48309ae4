"""Writes the violations of a result as a page.   usage: own_report.py RESULT PAGE"""

import html
import sys

from vok_rulecheck import RuleService_pb2 as pb, converter

SAFE = (pb.Resource.HTTP, pb.Resource.HTTPS, pb.Resource.FILE)


def make_safe(message):
    """Escapes the strings of arguments, and removes addresses that a page must not link to."""
    for field, value in message.ListFields():
        if field.type == field.TYPE_STRING:
            setattr(message, field.name, html.escape(value))
        elif field.name == "url" and value.scheme not in SAFE:
            message.ClearField("url")
        elif field.message_type:
            for part in value if field.label == field.LABEL_REPEATED else [value]:
                make_safe(part)


def row(number, violation):
    make_safe(violation.details.args)
    cells = [str(number), converter.to_string(violation.severity, pb.Violation.Severity),
             html.escape(violation.rule_key), html.escape(violation.details.text),
             ", ".join(converter.to_html_many(violation.details.args.arg))]
    return "<tr>" + "".join(f"<td>{cell}</td>" for cell in cells) + "</tr>\n"


with open(sys.argv[1], "rb") as file:
    violations = pb.SessionResult.FromString(file.read()).violations.hashmap
with open(sys.argv[2], "w", encoding="utf-8", errors="replace") as page:
    page.write('<!DOCTYPE html>\n<meta charset="utf-8">\n<title>Violations</title>\n<table>\n')
    page.writelines(row(number, violations[number]) for number in sorted(violations))
    page.write("</table>\n")
