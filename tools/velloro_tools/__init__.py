"""The development tools. The commands beside this package start its modules; tests and benchmarks
import them with the folder of the commands in PYTHONPATH."""
