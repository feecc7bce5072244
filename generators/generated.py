"""What the generators of checked-in files share."""
import os
import sys

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))


def write_or_check(files):
    """Writes the texts to these paths below the root; with --check only says whether they stand there. Gives the exit
    status."""
    differ = 0
    for name, text in files.items():
        path = os.path.join(ROOT, name)
        if "--check" in sys.argv[1:]:
            same = os.path.exists(path) and open(path, encoding="ascii").read() == text
            print(f"{name}: {'as made' if same else 'differs'}")
            differ += not same
        else:
            with open(path, "w", encoding="ascii") as file:
                file.write(text)
    return 1 if differ else 0
