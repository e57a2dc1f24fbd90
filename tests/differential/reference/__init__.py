"""A plain model of the program's behaviour, written without its sources: what a run prints, answers and leaves."""
