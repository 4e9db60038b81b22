"""The commands of docs/tutorial.md as a new user would type them, and what they print."""

import unittest

import numpy as np
from document import ROOT, Document
from pictures import read_png


class Tutorial(Document):
    def test_every_command_prints_what_the_tutorial_shows(self):
        self.type_document("tutorial.md", least=10)
        take = self.folder / "take"
        self.assertTrue((take / "figure.pdf").read_bytes().startswith(b"%PDF"))
        self.check_figure(take / "figure.png")

    def check_figure(self, path):
        """The document shows what its command makes; letters may differ where another version draws them."""
        made, shown = (read_png(file.read_bytes()) for file in (path, ROOT / "docs" / "take3.png"))
        self.assertEqual(made.shape, shown.shape)
        self.assertGreater(np.mean(made == shown), 0.98)


if __name__ == "__main__":
    unittest.main()
