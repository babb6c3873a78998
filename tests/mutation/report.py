"""What a campaign has shown."""

import collections
import csv
import pathlib

CAUGHT = ("killed", "timed out")
ALIVE = ("survived", "not reached")
KNOWN = pathlib.Path(__file__).resolve().parent / "survivors.tsv"
COLUMNS = (*CAUGHT, *ALIVE, "explained")


def explanations():
    """What is known of survivors: {(file, function, operator, original, replacement): (class, reason)}."""
    with open(KNOWN, newline="") as file:
        rows = csv.reader(file, delimiter="\t", quoting=csv.QUOTE_NONE)
        return {tuple(row[:5]): (row[5], row[6]) for row in rows if row and not row[0].startswith("#")}


def key_of(mutant):
    """What a mutant is known by; without its line, which moves."""
    def flat(text):
        return " ".join(text.split())
    return (mutant.file, mutant.function, mutant.operator, flat(mutant.original), flat(mutant.replacement))


def write(campaign, mutants):
    """Prints the survivors that nobody has explained, and a table; answers 1 if there are any of the former."""
    known, results = explanations(), campaign.results()
    tables = {title: collections.defaultdict(collections.Counter) for title in ("floor", "folder", "operator")}
    unexplained = 0
    for mutant in mutants:
        result = results.get(mutant.number, {}).get("result", "open")
        if result in ALIVE and key_of(mutant) in known:
            result = "explained"
        elif result in ALIVE:
            unexplained += 1
            print("\t".join((*key_of(mutant), result, f"{mutant.file}:{mutant.line}:{mutant.column} #{mutant.number}")))
        for title, name in (("floor", campaign.floor_of(mutant.file)["name"]),
                            ("folder", str(pathlib.PurePath(mutant.file).parent)), ("operator", mutant.operator)):
            tables[title][name][result] += 1
    for title, table in tables.items():
        print_table(title, table)
    print_total(sum(tables["floor"].values(), collections.Counter()), unexplained)
    return 1 if unexplained else 0


def print_total(counts, unexplained):
    caught = sum(counts[kind] for kind in CAUGHT)
    print(f"\n{caught + counts['explained'] + unexplained} cases of mutants: {caught} caught, "
          f"{counts['explained']} live for a known reason, {unexplained} for none")


def print_table(title, table):
    print("\t".join((f"\n{title}", "mutants", "judged", *COLUMNS, "caught of what can be, %")))
    for name, counts in [*sorted(table.items()), ("all", sum(table.values(), collections.Counter()))]:
        judged = sum(counts[column] for column in COLUMNS)
        score = f"{100 * sum(counts[kind] for kind in CAUGHT) / (judged - counts['explained']):.1f}" \
            if judged > counts["explained"] else "-"
        print("\t".join(map(str, (name, counts.total(), judged, *(counts[column] for column in COLUMNS), score))))
