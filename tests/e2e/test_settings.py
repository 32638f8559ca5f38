"""What velk takes its settings from: project files that cannot be read, new ones, and what is said about them."""

from service import USAGE, ServiceTest, main


class ProjectFiles(ServiceTest):
    def test_why_a_file_cannot_be_read(self):
        (self.folder / "large.toml").touch()
        with open(self.folder / "large.toml", "r+b") as large:
            large.truncate(16 * 1024 * 1024 + 1)
        for file, reason in (("none.toml", "No such file or directory"), (".", "it is a directory"),
                             ("/dev/zero", "it is a device"), ("large.toml", "it is larger than 16 MiB")):
            done = self.run_velk(["config", "check", file])
            self.assert_ends(done, USAGE)
            self.assertTrue(done.stderr.startswith(f"{file}: the project file cannot be read: {reason}"), done.stderr)
            self.assertEqual(done.stdout, "")


if __name__ == "__main__":
    main()
