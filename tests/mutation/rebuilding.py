"""Judges mutants that cannot be built in beside others: one build each, in a tree for each worker."""

import contextlib
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
        self.trees, self.builds = {}, {}       # of each worker

    def judge(self, mutants):
        write_results(self.campaign, in_parallel(self.judge_one, mutants, self.runners), len(mutants))

    def judge_one(self, mutant, worker):
        tree = self.tree_of(worker)
        with self.changed(tree, mutant):
            failed = self.failed_check(tree, mutant.file)
        if failed:
            return result_of(mutant, "killed", failed)
        build = self.build_of(worker)
        with self.changed(tree, mutant):
            return self.build_and_run(mutant, build, worker)

    @contextlib.contextmanager
    def changed(self, tree, mutant):
        source = (self.campaign.root / mutant.file).read_bytes()
        (tree / mutant.file).write_bytes(schemata.apply(mutant, source))
        try:
            yield
        finally:
            (tree / mutant.file).write_bytes(source)

    # What there is without any mutant: where something fails already, nothing could be said of one.

    def tree_of(self, worker):
        if worker not in self.trees:
            tree = self.campaign.copy_tree(f"rebuilt-{worker}")
            for check in self.campaign.project["check"]:
                if failed := self.failed_check(tree, check["folders"][0] + "/"):
                    raise SystemExit(f"{failed} fails without any mutant")
            self.trees[worker] = tree
        return self.trees[worker]

    def build_of(self, worker):
        if worker not in self.builds:
            build = self.campaign.work / f"rebuilt-{worker}-build"
            programs = self.campaign.named("programs")
            self.campaign.configure(self.trees[worker], build)
            subprocess.run(["ninja", "-C", build, *programs], check=True, stdout=subprocess.DEVNULL)
            status, program, test = self.run(build, programs, worker)
            if status != "passed":
                raise SystemExit(f"{program} fails without any mutant: {test}")
            self.builds[worker] = build
        return self.builds[worker]

    # With a mutant.

    def failed_check(self, tree, file):
        """The first check that fails, of those that see a change of this file without a build of the library."""
        for check in self.campaign.project["check"]:
            if any(file.startswith(folder + "/") for folder in check["folders"]):
                if subprocess.run(check["command"], cwd=tree, capture_output=True).returncode != 0:
                    return check["name"]
        return None

    def build_and_run(self, mutant, build, worker):
        programs = self.campaign.floor_of(mutant.file)["programs"]
        if subprocess.run(["ninja", "-C", build, "-j", "1", *programs], capture_output=True).returncode != 0:
            return result_of(mutant, "does not compile")
        status, program, test = self.run(build, programs, worker)
        results = {"passed": "survived", "failed": "killed"}
        return result_of(mutant, results.get(status, status), program, test)

    def run(self, build, programs, worker):
        """Runs all tests up to the first failure: "passed", "failed" or "timed out", and where."""
        folder = self.campaign.work / f"run-{worker}"
        folder.mkdir(exist_ok=True)
        for program in programs:
            status, test, _ = run_tests(build / "bin" / program, None, {}, CPU, WALL, folder)
            if status != "passed":
                return status, program, test
        return "passed", "", ""
