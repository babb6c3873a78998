"""A campaign's folder: the instrumented tree and its build, the lists of mutants, reach and results."""

import concurrent.futures
import dataclasses
import hashlib
import json
import pathlib
import re
import shlex
import shutil
import subprocess
import threading
import tomllib

import schemata
import sites
from source import Mutant

HERE = pathlib.Path(__file__).resolve().parent


class Campaign:
    def __init__(self, root, work, jobs, floors=None, alone=False):
        self.root = pathlib.Path(root).resolve()
        self.work = pathlib.Path(work).resolve()
        self.jobs = jobs
        self.project = tomllib.loads((HERE / "project.toml").read_text())
        self.chosen_floors = [floor for floor in self.project["floor"] if not floors or floor["name"] in floors]
        self.mutated_floors = self.chosen_floors if alone else self.project["floor"]
        self.folders = [folder for floor in self.mutated_floors for folder in floor["folders"]]
        if alone:
            for floor in self.chosen_floors:
                floor["others"] = []
        self.work.mkdir(parents=True, exist_ok=True)

    # What is kept.

    def load(self, name, default=None):
        path = self.work / name
        return json.loads(path.read_text()) if path.exists() else default

    def save(self, name, value):
        (self.work / name).write_text(json.dumps(value, indent=0))

    def mutants(self):
        return [Mutant(**fields) for fields in self.load("mutants.json", [])]

    def save_mutants(self, mutants):
        self.save("mutants.json", [dataclasses.asdict(mutant) for mutant in mutants])

    def results(self):
        """The last word on each mutant."""
        path = self.work / "results.jsonl"
        lines = path.read_text().splitlines() if path.exists() else []
        return {result["mutant"]: result for result in map(json.loads, lines)}

    def floor_of(self, file):
        return next((floor for floor in self.mutated_floors
                     if any(file.startswith(folder + "/") for folder in floor["folders"])), None)

    def programs(self):
        """All that judge the chosen floors, in their order."""
        return self.named("programs", "others")

    def named(self, *lists):
        """What the chosen floors' lists name, each once."""
        return list(dict.fromkeys(name for floor in self.chosen_floors for which in lists for name in floor[which]))

    def program(self, name):
        return self.work / "instrumented-build" / "bin" / name

    # Trees.

    def listed_files(self):
        listed = subprocess.run(["git", "ls-files", "-z", "--cached", "--others", "--exclude-standard"],
                                cwd=self.root, check=True, capture_output=True).stdout
        return [file for file in listed.decode().split("\0") if file and (self.root / file).is_file()]

    def copy_tree(self, name, is_instrumented=False):
        """A copy of the checkout, brought up to date; an instrumented one but for what is mutated."""
        tree = self.work / name
        for file in self.listed_files():
            copy = tree / file
            if copy.exists() and (is_instrumented and self.floor_of(file)
                                  or copy.read_bytes() == (self.root / file).read_bytes()):
                continue
            copy.parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(self.root / file, copy)
        return tree

    def configure(self, tree, build, link_flags=""):
        if (build / "build.ninja").exists():
            return
        command = ["cmake", "-S", tree, "-B", build, *self.project["cmake"],
                   f"-DCMAKE_CXX_FLAGS={self.project['flags']}"]
        if link_flags:
            command += [f"-DCMAKE_{kind}_LINKER_FLAGS={link_flags}" for kind in ("EXE", "SHARED", "MODULE")]
        subprocess.run(command, check=True, stdout=subprocess.DEVNULL)

    def compile_commands(self, build):
        commands = {}
        for entry in json.loads((build / "compile_commands.json").read_text()):
            flags = [word for word in shlex.split(entry["command"]) if word.startswith(("-I", "-D", "-std"))]
            commands.setdefault(entry["file"], flags)
        return [(path, flags) for path, flags in sorted(commands.items())
                if any(path.startswith(f"{self.root}/{folder}/") for folder in self.folders)]

    # Steps.

    def find(self):
        """All mutants, anew if a source has changed; the caught ones of the other files stay caught."""
        sources = {file: hashlib.sha256((self.root / file).read_bytes()).hexdigest()
                   for file in self.listed_files() if self.floor_of(file)}
        before = self.load("sources.json", {})
        if before == sources:
            return
        caught = self.caught_in({file for file in sources if before.get(file) == sources[file]})
        for name in ("results.jsonl", "reach.json"):
            (self.work / name).unlink(missing_ok=True)
        shutil.rmtree(self.work / "instrumented", ignore_errors=True)
        build = self.work / "commands"
        self.configure(self.root, build)
        self.save_mutants(sites.find_mutants(self.root, self.folders, self.compile_commands(build)))
        self.keep(caught)
        self.save("sources.json", sources)

    def caught_in(self, files):
        """The results of the mutants in these files that a failing test has caught, by what the mutants change."""
        results = self.results()
        return {mutant.key: results[mutant.number] for mutant in self.mutants()
                if mutant.file in files and results.get(mutant.number, {}).get("result") == "killed"}

    def keep(self, caught):
        """Writes the results again, under the mutants' new numbers."""
        with open(self.work / "results.jsonl", "w") as file:
            for mutant in self.mutants():
                if mutant.key in caught:
                    file.write(json.dumps({**caught[mutant.key], "mutant": mutant.number}) + "\n")

    def build(self):
        """Builds all mutants at once; what cannot be built so is marked as needing a build of its own."""
        mutants = self.mutants()
        runtime = self.work / "mutation.o"
        if not runtime.exists():
            subprocess.run([self.project["compiler"], "-std=c++20", "-O2", "-fPIC", "-fvisibility=hidden", "-c",
                            HERE / "posix/mutation.cpp", "-o", runtime], check=True)
        tree, build = self.copy_tree("instrumented", is_instrumented=True), self.work / "instrumented-build"
        self.configure(tree, build, str(runtime))
        variables = schemata.number_variables(mutants)
        for targets in (self.named("libraries"), self.programs()):
            self.build_until_clean(tree, build, mutants, variables, targets)

    def build_until_clean(self, tree, build, mutants, variables, targets):
        for _ in range(20):
            self.write_instrumented(tree, mutants, variables)
            made = subprocess.run(["ninja", "-C", build, "-k", "0", "-j", str(self.jobs), *targets],
                                  capture_output=True, text=True)
            if made.returncode == 0:
                self.save_mutants(mutants)
                return
            dropped, unclear = self.drop_culprits(made.stdout + made.stderr, mutants, variables)
            print(f"{dropped} mutants left out, {len(unclear)} complaints unclear", flush=True)
            self.save_mutants(mutants)
            if dropped == 0:
                (self.work / "build.log").write_text(made.stdout + made.stderr)
                raise SystemExit("The instrumented tree does not build; see build.log\n" +
                                 "\n".join(sorted(unclear)[:20]))
        raise SystemExit("The instrumented tree does not build in twenty rounds")

    def drop_culprits(self, output, mutants, variables):
        bad_mutants, bad_variables, unclear = schemata.culprits(output)
        names = set().union(*(self.words_at(complaint) for complaint in unclear))
        dropped = 0
        for mutant in mutants:
            variable = variables.get(schemata.variable_of(mutant))
            in_bad_variable = variable is not None and (variable in bad_variables or mutant.variable[2] in names)
            if not mutant.needs_build and (mutant.number in bad_mutants or in_bad_variable):
                mutant.needs_build = "does not compile in beside others"
                dropped += 1
        return dropped, unclear

    def words_at(self, complaint):
        """The words of the line that the compiler complains about."""
        place = schemata.COMPLAINT.match(complaint)
        if place is None or not (self.root / place[1]).is_file():
            return set()
        return set(re.findall(r"\w+", (self.root / place[1]).read_text().splitlines()[int(place[2]) - 1]))

    def write_instrumented(self, tree, mutants, variables):
        by_file, uses = {}, schemata.uses_of_enumerators(mutants)
        for mutant in mutants:
            by_file.setdefault(mutant.file, []).append(mutant)
        for file, its in by_file.items():
            source = (self.root / file).read_bytes()
            text = schemata.instrument(file, source, its, variables, HERE / "posix/mutation.h", uses[file])
            if (tree / file).read_text() != text:
                (tree / file).write_text(text)


def in_parallel(work, items, jobs):
    """Calls work(item, worker's number) for all items; results as they come."""
    free = list(range(jobs))
    lock = threading.Lock()

    def call(item):
        with lock:
            worker = free.pop()
        try:
            return work(item, worker)
        finally:
            with lock:
                free.append(worker)

    with concurrent.futures.ThreadPoolExecutor(jobs) as pool:
        for future in concurrent.futures.as_completed([pool.submit(call, item) for item in items]):
            yield future.result()
