"""velk completions, help and --version."""

import shutil
import subprocess
from pathlib import Path

from service import GOOD, PROGRAM, USAGE, ServiceTest, main, require

ASK = r"""
source "$1"
shift
COMP_WORDS=("$@")
COMP_CWORD=$((${#COMP_WORDS[@]} - 1))
COMP_LINE="${COMP_WORDS[*]}"
COMP_POINT=${#COMP_LINE}
function=$(complete -p velk | sed 's/.* -F \([^ ]*\).*/\1/')
"$function" velk "${COMP_WORDS[COMP_CWORD]}" "${COMP_WORDS[COMP_CWORD-1]}"
printf '%s\n' "${COMPREPLY[@]}"
"""


class Completions(ServiceTest):
    def setUp(self):
        super().setUp()
        self.environment["PATH"] = f"{Path(PROGRAM).parent}:{self.environment['PATH']}"  # the shells call it

    def script(self, shell):
        done = self.run_velk(["completions", shell])
        self.assert_ends(done, GOOD)
        self.assertEqual(done.stderr, "")
        file = self.folder / f"velk.{shell}"
        file.write_text(done.stdout, encoding="utf-8")
        return file

    def complete(self, *words):
        """What a real bash offers for the last one of these words."""
        script = self.folder / "velk.bash"
        script = script if script.exists() else self.script("bash")
        done = subprocess.run(["bash", "--norc", "-c", ASK, "bash", script, "velk", *words], cwd=self.folder,
                              capture_output=True, text=True, timeout=60, check=True, env=self.environment)
        self.assertEqual(done.stderr, "")
        return {word.rstrip() for word in done.stdout.splitlines() if word}

    def test_commands(self):
        self.assertEqual(self.complete("c"), {"check", "console", "config", "completions"})
        everything = self.complete("")
        self.assertTrue({"ports", "init", "check", "symbols", "read", "write", "watch", "console", "trace", "plc",
                         "config", "completions", "help"} <= everything, everything)

    def test_commands_of_commands(self):
        self.assertEqual(self.complete("config", ""), {"check", "show"})

    def test_flags(self):
        self.assertEqual(self.complete("read", "--ba"), {"--baud"})
        self.assertEqual(self.complete("plc", "--re"), {"--refuse-login", "--replace-program", "--restart"})
        self.assertIn("--every", self.complete("watch", "--"))
        self.assertNotIn("--every", self.complete("read", "--"))

    def test_values_of_flags(self):
        self.assertEqual(self.complete("check", "--parity", ""), {"none", "even", "odd", "mark"})
        self.assertEqual(self.complete("check", "--byte-order", "b"), {"big"})
        self.assertEqual(self.complete("completions", ""), {"bash", "zsh", "fish"})

    def test_files_and_folders(self):
        (self.folder / "plant.toml").touch()
        self.assertIn("plant.toml", self.complete("config", "check", "pl"))
        self.assertIn("plant.toml", self.complete("read", "--file", "pl"))

    def test_names_with_blanks_stay_whole(self):
        (self.folder / "my plant.toml").touch()
        (self.folder / "my storage").mkdir()
        self.assertEqual(self.complete("read", "--file", "my p"), {"my plant.toml"})
        self.assertEqual(self.complete("read", "--storage", "my"), {"my storage"})

    def test_commands_to_get_help_for(self):
        self.assertEqual(self.complete("help", "co"), {"console", "config", "completions"})

    def test_behind_a_trace(self):
        self.assertIn("read", self.complete("trace", "--", "re"))

    def test_typed_on_a_terminal(self):
        """Tab after a part of a word, as a person would."""
        script = self.script("bash")
        import pexpect  # checked for by service
        shell = pexpect.spawn("bash", ["--norc", "--noprofile"], cwd=str(self.folder), timeout=60, encoding="utf-8",
                              env={**self.environment, "PS1": "$ "})
        self.addCleanup(shell.close, True)
        shell.expect_exact("$ ")
        shell.sendline(f"source {script}; velk() {{ echo \"ran:$*:\"; }}; echo read''y")
        shell.expect("ready\r\n")
        (self.folder / "plant of mine.toml").touch()
        for typed, ran in (("velk symb\t--byte-o\tlit\t", "symbols --byte-order little"),
                           ("velk check --parity=ev\t", "check --parity=even"),
                           ("velk config check pla\t", "config check plant of mine.toml")):
            shell.send(typed + "\r")
            shell.expect_exact(f"ran:{ran}")

    def test_zsh_takes_its_script(self):
        require("zsh")
        script = self.script("zsh")
        subprocess.run(["zsh", "-f", "-n", script], check=True, timeout=60)
        script.rename(self.folder / "_velk")  # where zsh looks for it
        done = subprocess.run(["zsh", "-f", "-c", f"fpath=({self.folder} $fpath); autoload -Uz compinit; "
                               f"compinit -u -d {self.folder}/dump; print -r -- ${{_comps[velk]}}"],
                              capture_output=True, text=True, timeout=60, check=True)
        self.assertEqual(done.stdout.strip(), "_velk", done.stderr)

    def test_zsh_completes_on_a_terminal(self):
        require("zsh")
        self.script("zsh").rename(self.folder / "_velk")
        (self.folder / "plant of mine.toml").touch()
        (self.folder / "folder").mkdir()
        import pexpect  # checked for by service
        shell = pexpect.spawn("zsh", ["-f"], cwd=str(self.folder), timeout=60, encoding="utf-8",
                              env={**self.environment, "PS1": "$ ", "TERM": "dumb"})
        self.addCleanup(shell.close, True)
        shell.sendline(f"fpath=({self.folder} $fpath); autoload -Uz compinit; compinit -u -d dump; "
                       "velk() { echo \"ran:$*:\" }; echo read''y")
        shell.expect("ready\r\n")
        for typed, ran in (("velk symb\t--byte-o\tlit\t", "symbols --byte-order little"),
                           ("velk trace -- symb\t--byte-o\tlit\t", "trace -- symbols --byte-order little"),
                           ("velk trace -o t.txt -- conf\tsh\t", "trace -o t.txt -- config show"),
                           ("velk config check pla\t", "config check plant of mine.toml"),
                           ("velk read --file=pla\t", "read --file=plant of mine.toml"),
                           ("velk read --storage fol\t", "read --storage folder"),  # without the sign that zsh takes back
                           ("velk read --parity=ev\t", "read --parity=even")):
            shell.send(typed + "\r")
            shell.expect_exact(f"ran:{ran}:")

    def test_fish_completes(self):
        require("fish")
        script = self.script("fish")
        subprocess.run(["fish", "--no-execute", script], check=True, timeout=60)
        done = subprocess.run(["fish", "--no-config", "-c", f"source {script}; complete -C 'velk conf'; "
                               "complete -C 'velk check --par'; complete -C 'velk check --parity o'"],
                              capture_output=True, text=True, timeout=60, check=True,
                              env={**self.environment, "HOME": str(self.folder)})
        words = {line.split("\t")[0] for line in done.stdout.splitlines()}
        self.assertEqual(words, {"config", "--parity", "odd"}, done.stderr)

    def test_fish_completes_behind_a_trace(self):
        require("fish")
        script = self.script("fish")
        for line, wanted in (("velk trace -- symb", {"symbols"}), ("velk trace -o t.txt -- conf", {"config"}),
                             ("velk trace -- config ", {"check", "show"}), ("velk trace -- read --ba", {"--baud"}),
                             ("velk trace -- check --parity o", {"odd"}), ("velk trace --form", {"--format"})):
            done = subprocess.run(["fish", "--no-config", "-c", f"source {script}; complete -C '{line}'"],
                                  capture_output=True, text=True, timeout=60, check=True,
                                  env={**self.environment, "HOME": str(self.folder)})
            self.assertEqual({each.split("\t")[0] for each in done.stdout.splitlines()}, wanted, line)

    def test_values_in_the_word_of_their_flag(self):
        """bash splits words at "=", and completes the part after it."""
        (self.folder / "plant.toml").touch()
        self.assertEqual(self.complete("check", "--parity", "=", "e"), {"even"})
        self.assertEqual(self.complete("check", "--parity", "="), {"none", "even", "odd", "mark"})
        self.assertEqual(self.complete("check", "--file", "=", "pl"), {"plant.toml"})

    def test_fish_completes_files_and_values_behind_a_sign(self):
        script = self.script("fish")
        (self.folder / "my plant.toml").touch()
        (self.folder / "my storage").mkdir()
        for line, wanted in (("velk config check my", {"my plant.toml", "my storage/"}),
                             ("velk read --storage my", {"my storage/"}),
                             ("velk read --file=my", {"--file=my plant.toml", "--file=my storage/"}),
                             ("velk read --parity=o", {"--parity=odd"}), ("velk read -qp /dev/nul", {"/dev/null"})):
            done = subprocess.run(["fish", "--no-config", "-c", f"source {script}; complete -C '{line}'"],
                                  cwd=self.folder, capture_output=True, text=True, timeout=60, check=True,
                                  env={**self.environment, "HOME": str(self.folder)})
            self.assertEqual({each.split("\t")[0] for each in done.stdout.splitlines()}, wanted, line)

    def test_a_shell_without_the_program_shows_nothing(self):
        (self.folder / "bin").mkdir()
        for tool in ("sed", "uname"):
            (self.folder / "bin" / tool).symlink_to(shutil.which(tool))
        shells = {shell: shutil.which(shell) for shell in ("bash", "fish")}
        script = self.script("bash"), self.script("fish")
        environment = {**self.environment, "PATH": str(self.folder / "bin"), "HOME": str(self.folder)}
        for words in ([shells["bash"], "--norc", "-c", ASK, "bash", script[0], "velk", "re"],
                      [shells["fish"], "--no-config", "-c", f"source {script[1]}; complete -C 'velk re'"]):
            done = subprocess.run(words, cwd=self.folder, capture_output=True, text=True, timeout=60, env=environment,
                                  check=False)
            self.assertEqual((done.stdout.strip(), done.stderr), ("", ""), words[0])

    def test_wrong_usage(self):
        for words in (["completions"], ["completions", "tcsh"], ["completions", "bash", "zsh"]):
            done = self.run_velk(words)
            self.assert_ends(done, USAGE)
            self.assertEqual(done.stdout, "")


class Help(ServiceTest):
    def test_version(self):
        done = self.run_velk(["--version"])
        self.assert_ends(done, GOOD)
        self.assertRegex(done.stdout, r"velk \d+\.\d+\.\d+")
        self.assertEqual(done.stderr, "")
        self.assertEqual(self.run_velk(["-V"]).stdout, done.stdout)

    def test_help_in_all_its_ways_is_the_same(self):
        whole = self.run_velk(["help"])
        self.assert_ends(whole, GOOD)
        self.assertEqual(whole.stderr, "")
        for words in (["--help"], ["-h"]):
            self.assertEqual(self.run_velk(words).stdout, whole.stdout)

    def test_help_for_each_command(self):
        commands = [line.split()[0] for line in self.run_velk(["help"]).stdout.split("Commands:\n")[1].split(
            "\n\n")[0].splitlines() if line.startswith("  ") and line[2] != " "]
        self.assertGreaterEqual(len(commands), 13)
        for command in commands:
            done = self.run_velk(["help", command])
            self.assert_ends(done, GOOD)
            self.assertTrue(done.stdout.startswith(f"Usage: velk {command}"), done.stdout)
            self.assertEqual(self.run_velk([command, "--help"]).stdout, done.stdout)
            for line in done.stdout.splitlines():
                self.assertLessEqual(len(line), 80, line)

    def test_help_names_what_a_flag_takes(self):
        self.assertIn("--replace-program TIME[:FILE]\n", self.run_velk(["help", "plc"]).stdout)

    def test_wrong_usage(self):
        for words, reason in (([], "what is to be done"), (["help", "nonsense"], "nonsense"), (["nonsense"], "nonsense"),
                              (["--nonsense"], "--nonsense")):
            done = self.run_velk(words)
            self.assert_ends(done, USAGE)
            self.assertIn(reason, done.stderr)
            self.assertEqual(done.stdout, "")


if __name__ == "__main__":
    main()
