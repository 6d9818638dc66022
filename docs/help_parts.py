#!/usr/bin/env python3
"""Makes the ready-made profiles, and the parts of the help document that follow from them, out of
docs/reliability.txt and docs/expectations.txt. With --check it only says which of them are not as
they would be made, and fails when there is one."""
import html
import re
import sys
from pathlib import Path

ROOT = Path(__file__).parent.parent
PAGE = ROOT / "assets/Quirkmeter.htm"
SUBSYSTEMS = {1: 14, 2: 7, 3: 7, 4: 8, 5: 12, 6: 10, 7: 4}
KINDS = ["trainer", "light-twin", "airliner", "freighter"]

# Profile: whose hours, how much the failures are multiplied to be worth flying with, which systems.
RAISED = {
    "trainer": ("trainer", 20, SUBSYSTEMS),
    "light-twin": ("light-twin", 20, SUBSYSTEMS),
    "airliner": ("airliner", 100, SUBSYSTEMS),
    "freighter": ("freighter", 20, SUBSYSTEMS),
    "instruments": ("trainer", 100, [6]),
    "engines": ("trainer", 500, [4]),
}
PROFILES = [*KINDS, "check-ride", "instruments", "engines"]


class Row:
    """One line of docs/reliability.txt."""

    def __init__(self, line):
        what, pairs, *hours, check_ride, why = (field.strip() for field in line.split(" | "))
        self.what, self.why = what, why
        self.pairs = [tuple(map(int, pair.split("."))) for pair in pairs.split()]
        self.hours = {kind: Row.number(text) for kind, text in zip(KINDS, hours, strict=True)}
        self.check_ride = Row.number(check_ride)

    @staticmethod
    def number(text):
        return None if text == "-" else int(text)

    def setting(self, profile):
        """(reliability, hours) in that profile; None where it cannot fail."""
        if profile == "check-ride":
            return self.check_ride and (100 - self.check_ride, 1)
        kind, factor, systems = RAISED[profile]
        if self.hours[kind] is None or self.pairs[0][0] not in systems:
            return None
        return whole_numbers(factor / self.hours[kind])


def whole_numbers(rate):
    """(reliability, hours) for a number of failures per hour of flight. Whole numbers, which every
    regional setting writes alike; over so many hours that half a percent is little."""
    for hours in (1, 10, 100, 500):
        percent = round(rate * hours * 100)
        if percent >= 5:
            break
    return 100 - percent, hours


def read_rows():
    lines = (ROOT / "docs/reliability.txt").read_text().splitlines()
    rows = [Row(line) for line in lines if line and not line.startswith("#")]
    named = sorted(pair for row in rows for pair in row.pairs)
    assert named == [(s, n) for s, count in SUBSYSTEMS.items() for n in range(1, count + 1)]
    return rows


def profile_text(rows, profile):
    settings = {pair: row.setting(profile) or (100, 1) for row in rows for pair in row.pairs}
    return "".join(
        f"{s}#{n}#{reliability}#{hours}\r\n"
        for (s, n), (reliability, hours) in sorted(settings.items())
    )


def cell(text):
    number = re.fullmatch(r"(&nbsp;|[-\d.,%/])+( of flights)?", text)
    return f'<td align="right">{text}</td>' if number else f"<td>{text}</td>"


def table(head, lines):
    """A table that scrolls on a narrow screen."""
    heads = "".join(f'<th scope="col">{text}</th>' for text in head)
    rows = ["".join(map(cell, line)) for line in lines]
    return (
        '<div class="wide">\n<table border="1" cellpadding="4" cellspacing="0">\n'
        f"<thead><tr>{heads}</tr></thead>\n<tbody>\n"
        + "".join(f"<tr>{row}</tr>\n" for row in rows)
        + "</tbody>\n</table>\n</div>\n"
    )


def reality(rows):
    def hours(row, kind):
        return f"{row.hours[kind]:,}" if row.hours[kind] else "-"

    return table(
        ["What fails", "Trainer", "Twin", "Airliner", "Freighter", "Why"],
        [
            [row.what, *(hours(row, kind) for kind in KINDS), row.why]
            for row in rows
            if any(row.hours.values())
        ],
    )


def numbers(rows):
    def setting(row, profile):
        found = row.setting(profile)
        return f"{found[0]}%&nbsp;/&nbsp;{found[1]}" if found else "-"

    heads = [profile.replace("-", " ").capitalize() for profile in PROFILES]
    return table(
        ["Sub-systems", *heads],
        [[row.what, *(setting(row, profile) for profile in PROFILES)] for row in rows],
    )


def bars(head, chances):
    """A chart that any browser shows: a picture of one colour as long as the number beside it."""

    def bar(chance):
        percent = max(1, round(chance * 100))
        return f'<img src="help/bar.png" width="{percent * 3}" height="12" alt=""> {percent}%'

    return table(head, [[label, bar(chance)] for label, chance in chances])


def failed_by(percent, period, flown):
    """The chance of a failure within so many hours, one draw in each period at a random moment."""
    whole, rest = divmod(flown, period)
    chance = percent / 100
    return 1 - (1 - chance) ** whole * (1 - chance * rest / period)


def chart_over_time():
    return bars(
        ["Hours flown", "Has failed by then"],
        [(f"{h}", failed_by(10, 10, h)) for h in (1, 2, 5, 10, 20, 50, 100)],
    )


def chart_all():
    return bars(
        ["All 62 at", "Flights of two hours in which something fails"],
        [
            (f"{100 - p:g}% based on {h} {'hour' if h == 1 else 'hours'}",
             1 - (1 - failed_by(p, h, 2)) ** 62)
            for p, h in ((5, 1), (1, 1), (0.1, 1), (1, 10), (1, 100))
        ],
    )


def expectations():
    """From lines "profile | engines | flights without a failure in percent | failures per flight |
    likeliest", which a rehearsal gave."""
    lines = (ROOT / "docs/expectations.txt").read_text().splitlines()
    head = ["Profile", "Engines", "Nothing fails in", "Failures per flight", "Likeliest"]
    rows = [[html.escape(field.strip()) for field in line.split("|")] for line in lines]
    return table(
        head,
        [[f"<i>{p}.qmp</i>", e, f"{quiet}% of flights", mean, what] for p, e, quiet, mean, what in rows],
    )


def with_parts(page, parts):
    for name, text in parts.items():
        pattern = f"(<!-- made: {name} -->\n).*?(<!-- end -->)"
        page, count = re.subn(pattern, lambda m: m[1] + text + m[2], page, flags=re.DOTALL)
        assert count == 1, f"the page has no part {name}"
    return page


def main():
    rows = read_rows()
    made = {ROOT / f"assets/profiles/{p}.qmp": profile_text(rows, p) for p in PROFILES}
    parts = {
        "over-time": chart_over_time(),
        "all": chart_all(),
        "expectations": expectations(),
        "reality": reality(rows),
        "numbers": numbers(rows),
    }
    made[PAGE] = with_parts(PAGE.read_text(), parts)
    stale = [
        path
        for path, text in made.items()
        if not path.exists() or path.read_bytes() != text.encode("ascii")
    ]
    for path in stale:
        if "--check" in sys.argv:
            print(path.relative_to(ROOT), "is not as docs/help_parts.py makes it")
        else:
            path.write_bytes(made[path].encode("ascii"))
            print(path.relative_to(ROOT))
    return "--check" in sys.argv and len(stale) > 0


if __name__ == "__main__":
    sys.exit(main())
