"""What the end-to-end tests are written in: fixtures, the program's run, and the comparison with what is expected."""
