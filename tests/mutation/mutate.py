#!/usr/bin/python3
"""Measures how much the project's tests notice: see README.md."""

import argparse
import os
import random
import sys

import report
from campaign import Campaign
from judging import Judge
from rebuilding import Rebuilder

STEPS = ("find", "build", "reach", "judge", "report")


def chosen(campaign, options):
    """The mutants that the options name, in order."""
    mutants = [mutant for mutant in campaign.mutants()
               if campaign.floor_of(mutant.file) in campaign.chosen_floors
               and (not options.match or any(text in mutant.file for text in options.match))]
    if options.sample is None or options.sample >= len(mutants):
        return mutants
    return sorted(random.Random(options.seed).sample(mutants, options.sample), key=lambda mutant: mutant.number)


def judge(campaign, options):
    """The floor's own programs first, and those of other tiers on what they let live."""
    results = campaign.results()

    def is_open(mutant):
        result = results.get(mutant.number)
        return result is None or options.again and result["result"] in report.ALIVE

    mutants = [mutant for mutant in chosen(campaign, options) if is_open(mutant)]
    Judge(campaign, options.runners).judge([mutant for mutant in mutants if not mutant.needs_build])
    if options.rebuild:
        Rebuilder(campaign, options.runners).judge([mutant for mutant in mutants if mutant.needs_build])


def main():
    parser = argparse.ArgumentParser(prog="./run mutate", description=__doc__)
    parser.add_argument("steps", nargs="*", metavar="STEP", help=f"of {', '.join(STEPS)}; all without one")
    parser.add_argument("--root", default=".", help="the project's checkout")
    parser.add_argument("--work", default="build/mutate", help="a folder for the tree, its build and the results")
    parser.add_argument("--jobs", type=int, default=os.cpu_count(), help="compilers at a time")
    parser.add_argument("--runners", type=int, default=os.cpu_count(), help="test programs at a time")
    parser.add_argument("--floor", action="append", help="only this floor of project.toml")
    parser.add_argument("--alone", action="store_true",
                        help="change nothing but these floors, and ask their own programs only; in a folder of its own")
    parser.add_argument("--match", action="append", help="only files whose path contains this")
    parser.add_argument("--sample", type=int, help="so many of them, chosen evenly")
    parser.add_argument("--seed", type=int, default=1, help="of the sample")
    parser.add_argument("--again", action="store_true", help="judge once more what lived")
    parser.add_argument("--rebuild", action="store_true", help="also mutants that need a build each")
    options = parser.parse_args()
    if options.alone and not options.floor:
        parser.error("--alone wants a --floor")
    if unknown := set(options.steps) - set(STEPS):
        parser.error(f"no such step: {', '.join(unknown)}")

    work = "-".join((options.work, *options.floor)) if options.alone else options.work
    campaign = Campaign(options.root, work, options.jobs, options.floor, options.alone)
    status = 0
    for step in options.steps or STEPS:
        if step in ("find", "build"):
            getattr(campaign, step)()
        elif step == "reach":
            Judge(campaign, options.runners).measure_reach()
        elif step == "judge":
            judge(campaign, options)
        else:
            status = report.write(campaign, chosen(campaign, options))
    return status


if __name__ == "__main__":
    sys.exit(main())
