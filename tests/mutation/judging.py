"""Runs tests on mutants: which tests reach which mutant, and which mutants they catch."""

import collections
import json
import os
import re
import resource
import signal
import subprocess
import time

from campaign import in_parallel

# A mutant may take this much more than its tests took without it before it counts as hanging.
CPU_FACTOR, CPU_EXTRA = 3, 3
WALL_FACTOR, WALL_EXTRA = 3, 10
# What a test may take without a mutant, in seconds.
PATIENCE = 300
MEMORY = 4 << 30
# So many are asked first, and so many then: of the tests that have caught others of the file, and of those that have
# the most to do with the file. A program runs what it is asked for in an order of its own.
FIRST_ASKED, THEN_ASKED = 12, 60
# A test that takes longer than so many seconds comes last.
SLOW = 2
LONGEST_FILTER = 100_000


def run_tests(program, tests, environment, cpu, wall, folder):
    """Runs them until the first failure: "passed", "failed" or "timed out", the test at fault, and the time."""
    command = [str(program), "--gtest_fail_fast"]
    if tests is not None and len(names := ":".join(tests)) < LONGEST_FILTER:
        command.append("--gtest_filter=" + names)

    def limit():
        resource.setrlimit(resource.RLIMIT_CPU, (int(cpu) + 1, int(cpu) + 2))
        resource.setrlimit(resource.RLIMIT_AS, (MEMORY, MEMORY))
        resource.setrlimit(resource.RLIMIT_CORE, (0, 0))

    start = time.monotonic()
    process = subprocess.Popen(command, env={**os.environ, **environment}, cwd=folder, stdin=subprocess.DEVNULL,
                               stdout=subprocess.PIPE, stderr=subprocess.STDOUT, preexec_fn=limit,
                               start_new_session=True)
    try:
        output, _ = process.communicate(timeout=wall)
        status = process.returncode
    except subprocess.TimeoutExpired:
        status = None
    finally:
        end_group(process)
    if status is None:
        output, _ = process.communicate()
    text = output.decode(errors="replace")
    return (*verdict(status, text), time.monotonic() - start)


def end_group(process):
    try:
        os.killpg(process.pid, signal.SIGKILL)
    except ProcessLookupError:
        pass


def verdict(status, text):
    if status == 0:
        return "passed", ""
    running = last(r"\[ RUN      \] (\S+)", text)
    if status is None or status in (-signal.SIGXCPU, -signal.SIGKILL):
        return "timed out", running
    return "failed", last(r"\[  FAILED  \] ([\w./]+)", text.split("[==========]", 2)[-1]) or running


def last(pattern, text):
    found = re.findall(pattern, text)
    return found[-1].rstrip(",") if found else ""


def list_tests(program):
    tests, suite = [], ""
    for line in subprocess.run([program, "--gtest_list_tests"], check=True, capture_output=True,
                               text=True).stdout.splitlines():
        name = line.split("#")[0].rstrip()
        if name.startswith("  "):
            tests.append(suite + name.strip())
        elif name.endswith("."):
            suite = name
    return [test for test in tests if not re.search(r"(^|[./])DISABLED_", test)]


class Judge:
    def __init__(self, campaign, runners):
        self.campaign = campaign
        self.runners = runners
        self.reach = campaign.load("reach.json", {})
        self.catches = collections.Counter()   # by file and test
        self.shares = {}                       # likewise: how much of what a test reaches is of that file

    def folder(self, worker):
        folder = self.campaign.work / f"run-{worker}"
        folder.mkdir(exist_ok=True)
        return folder

    # Which tests reach what.

    def measure_reach(self):
        """Runs each test alone, once, of programs that have changed: its time and the mutants that it reaches."""
        count = len(self.campaign.mutants())
        for name in self.campaign.programs():
            program = self.campaign.program(name)
            built = program.stat().st_mtime
            if self.reach.get(name, {}).get("built") == built:
                continue
            tests, failing = {}, []
            for test, status, seconds, numbers in in_parallel(
                    lambda test, worker, program=program: self.reach_of(program, test, worker, count),
                    list_tests(program), self.runners):
                if status == "passed":
                    tests[test] = {"seconds": seconds, "reaches": numbers}
                else:
                    failing.append(test)
            print(f"{name}: {len(tests)} tests" + "".join(f"\n  fails alone without any mutant: {test}"
                                                           for test in failing), flush=True)
            self.reach[name] = {"built": built, "tests": tests}
            self.campaign.save("reach.json", self.reach)

    def reach_of(self, program, test, worker, count):
        path = self.folder(worker) / "reach"
        path.write_bytes(bytes(count))
        status, _, seconds = run_tests(program, [test], {"MUTANT_REACH": str(path)}, PATIENCE, PATIENCE,
                                       self.folder(worker))
        return test, status, seconds, [number for number, byte in enumerate(path.read_bytes()) if byte]

    # Which mutants are caught.

    def judge(self, mutants):
        """Writes a result for each mutant as it comes."""
        self.measure_shares()
        reaching = {}
        for program, known in self.reach.items():
            for test, what in known["tests"].items():
                for number in what["reaches"]:
                    reaching.setdefault((program, number), []).append(test)
        write_results(self.campaign, in_parallel(lambda mutant, worker: self.judge_one(mutant, reaching, worker),
                                                 mutants, self.runners), len(mutants))

    def measure_shares(self):
        """What every test reaches, since it runs at the start of the program, says nothing of a test."""
        file_of = {mutant.number: mutant.file for mutant in self.campaign.mutants()}
        for known in self.reach.values():
            reached = {test: set(what["reaches"]) for test, what in known["tests"].items()}
            always = set.intersection(*reached.values()) if reached else set()
            for test, numbers in reached.items():
                count = collections.Counter(file_of[number] for number in numbers - always)
                for file, its in count.items():
                    self.shares[file, test] = its / len(numbers)

    def judge_one(self, mutant, reaching, worker):
        floor = self.campaign.floor_of(mutant.file)
        ran = 0
        for program in floor["programs"] + floor["others"]:
            known = self.reach[program]["tests"]
            tests = sorted(reaching.get((program, mutant.number), []),
                           key=lambda test: (known[test]["seconds"] > SLOW, -self.catches[mutant.file, test],
                                             -self.shares.get((mutant.file, test), 0), known[test]["seconds"]))
            then = FIRST_ASKED + THEN_ASKED
            for some in filter(None, (tests[:FIRST_ASKED], tests[FIRST_ASKED:then], tests[then:])):
                usual = sum(known[test]["seconds"] for test in some)
                status, test, _ = run_tests(self.campaign.program(program), some, {"MUTANT": str(mutant.number)},
                                            CPU_EXTRA + CPU_FACTOR * usual, WALL_EXTRA + WALL_FACTOR * usual,
                                            self.folder(worker))
                ran += len(some)
                if status != "passed":
                    self.catches[mutant.file, test] += 1
                    return result_of(mutant, "killed" if status == "failed" else "timed out", program, test)
        return result_of(mutant, "survived" if ran else "not reached")


def result_of(mutant, result, program="", test=""):
    return {"mutant": mutant.number, "result": result, "program": program, "test": test}


def write_results(campaign, results, count):
    start, tally = time.monotonic(), {}
    with open(campaign.work / "results.jsonl", "a") as file:
        for done, result in enumerate(results, 1):
            file.write(json.dumps(result) + "\n")
            file.flush()
            tally[result["result"]] = tally.get(result["result"], 0) + 1
            if done % 200 == 0 or done == count:
                print(f"{done} of {count} in {time.monotonic() - start:.0f} s: {tally}", flush=True)
