#!/usr/bin/python3
"""Reads a file of vCards with vobject and makes of each card what vcard_bench makes: the text of
the names, organisation, addresses, phones, instant-messaging handles and note, the e-mail
addresses, phone numbers and home page. Prints the same counts and the median CPU seconds of RUNS reads.
Usage: vobject_read.py FILE [RUNS]"""
import statistics
import sys
import time

import vobject

IM_KEYS = ("x-aim", "x-icq", "x-jabber", "x-yahoo", "x-msn", "impp")


def values(card, key):
    return [line.value for line in card.contents.get(key, [])]


def joined(part, separator=" "):
    return separator.join(part) if isinstance(part, list) else (part or "")


def text_of(value):
    if isinstance(value, vobject.vcard.Address):
        city = " ".join(joined(p) for p in (value.city, value.region, value.code) if p)
        return "\n".join(p for p in (joined(value.street, "\n"), city, joined(value.country)) if p)
    if isinstance(value, list):
        return "; ".join(str(v) for v in value)
    return str(value)


def metadata(card):
    lines = []
    for name in values(card, "n"):
        lines += [joined(part) for part in (name.given, name.additional, name.family) if part]
    for key in ("nickname", "org", "adr", "tel") + IM_KEYS + ("note",):
        lines += [text_of(v) for v in values(card, key)]
    urls = values(card, "url")
    return {
        "text": "\n".join(lines) + "\n",
        "emails": values(card, "email"),
        "phones": values(card, "tel"),
        "url": urls[0] if urls else None,
    }


def read(path):
    # vobject reads text: the file is UTF-8 (its Windows code page values are quoted-printable).
    with open(path, encoding="utf-8", errors="replace") as f:
        data = f.read()
    return [metadata(card) for card in vobject.readComponents(data, allowQP=True)]


def main():
    path = sys.argv[1]
    runs = int(sys.argv[2]) if len(sys.argv) > 2 else 3
    seconds = []
    for _ in range(runs):
        start = time.process_time()
        people = read(path)
        seconds.append(time.process_time() - start)
    print("cards %d emails %d phones %d text %d cpu-seconds %.4f" % (
        len(people), sum(len(p["emails"]) for p in people), sum(len(p["phones"]) for p in people),
        sum(len(p["text"]) for p in people), statistics.median(seconds)))


if __name__ == "__main__":
    main()
