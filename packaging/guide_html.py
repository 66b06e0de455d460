#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Makes web pages of the user guide and of the licence, to be read without a network.

Usage: guide_html.py GUIDE.md LICENCE FOLDER
"""

import html
import re
import shutil
import sys
from pathlib import Path

import markdown

PAGE = """<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<title>{title}</title>
<style>
:root {{ color-scheme: light dark; --line: #c8ccd2; --quiet: #f3f4f6; --link: #0b57a4; }}
@media (prefers-color-scheme: dark) {{ :root {{ --line: #4a4f57; --quiet: #2a2d32; --link: #8ab8f0; }} }}
body {{ max-width: 46rem; margin: 2rem auto 4rem; padding: 0 1.2rem; font: 1rem/1.6 sans-serif; }}
h1, h2, h3 {{ line-height: 1.25; }}
h2 {{ margin-top: 3rem; padding-bottom: .3rem; border-bottom: 1px solid var(--line); }}
h3 {{ margin-top: 2rem; }}
a {{ color: var(--link); }}
img {{ max-width: 100%; height: auto; border: 1px solid var(--line); border-radius: 6px; }}
table {{ border-collapse: collapse; }}
th, td {{ padding: .35rem .8rem; border: 1px solid var(--line); text-align: left; vertical-align: top; }}
th, code {{ background: var(--quiet); }}
code {{ padding: .1rem .3rem; border-radius: 3px; }}
pre {{ white-space: pre-wrap; }}
</style>
</head>
<body>
{body}
</body>
</html>
"""


def main(guide, licence, folder):
    folder.mkdir(parents=True, exist_ok=True)
    body = markdown.markdown(guide.read_text(), extensions=["tables", "toc", "sane_lists"], output_format="html")
    for picture in re.findall(r'src="([^":]+)"', body):
        target = folder / picture
        target.parent.mkdir(parents=True, exist_ok=True)
        shutil.copyfile(guide.parent / picture, target)
    (folder / "index.html").write_text(PAGE.format(title="Varnock: user guide", body=body))
    text = f"<pre>{html.escape(licence.read_text())}</pre>"
    (folder / "gpl.html").write_text(PAGE.format(title="Varnock: licence", body=text))


if __name__ == "__main__":
    if len(sys.argv) != 4:
        sys.exit(__doc__)
    main(*map(Path, sys.argv[1:]))
