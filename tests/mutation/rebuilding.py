"""Judges mutants that cannot be built in beside others: one build each, in a tree for each worker."""

import subprocess

import schemata
from campaign import in_parallel
from judging import result_of, run_tests, write_results

# What a program may take, in seconds.
CPU, WALL = 100, 300


class Rebuilder:
    def __init__(self, campaign, runners):
        self.campaign = campaign
        self.runners = runners

    def judge(self, mutants):
        programs = list(dict.fromkeys(program for mutant in mutants
                                      for program in self.campaign.floor_of(mutant.file)["programs"]))
        for worker in range(self.runners if mutants else 0):
            self.campaign.configure(self.campaign.copy_tree(f"rebuilt-{worker}"), self.build_of(worker))
            subprocess.run(["ninja", "-C", self.build_of(worker), "-j", str(self.campaign.jobs), *programs],
                           check=True, stdout=subprocess.DEVNULL)
        write_results(self.campaign, in_parallel(self.judge_one, mutants, self.runners), len(mutants))

    def build_of(self, worker):
        return self.campaign.work / f"rebuilt-{worker}-build"

    def judge_one(self, mutant, worker):
        path = self.campaign.work / f"rebuilt-{worker}" / mutant.file
        source = (self.campaign.root / mutant.file).read_bytes()
        path.write_bytes(schemata.apply(mutant, source))
        programs = self.campaign.floor_of(mutant.file)["programs"]
        try:
            made = subprocess.run(["ninja", "-C", self.build_of(worker), "-j", "1", *programs], capture_output=True)
            if made.returncode != 0:
                return result_of(mutant, "does not compile")
            return self.run(mutant, programs, worker)
        finally:
            path.write_bytes(source)

    def run(self, mutant, programs, worker):
        folder = self.campaign.work / f"run-{worker}"
        folder.mkdir(exist_ok=True)
        for program in programs:
            status, test, _ = run_tests(self.build_of(worker) / "bin" / program, None, {}, CPU, WALL, folder)
            if status != "passed":
                return result_of(mutant, "killed" if status == "failed" else "timed out", program, test)
        return result_of(mutant, "survived")
