#!/usr/bin/env python3
"""Writes a program document of N float64 ports "p<i>" and N scale connectors in a ring,
p<i> -> p<i+1>, each with a `gain` parameter: the program that start-up is measured with.

Usage: bench/gen_program.py N [--type StartUp] [--output FILE] [--no-parameters]
(standard output by default; --no-parameters leaves the `gain` out, to profile the rest of the
start-up apart from the conversion of the parameters' literals)
"""
import argparse
import sys


def document(count, program_type, parameters=True):
    lines = ['<?xml version="1.0" encoding="utf-8"?>', "<ConfigurableProgram>",
             f'  <Program type="{program_type}">', "    <Ports>"]
    lines += [f'      <Port name="p{i}" type="float64"/>' for i in range(count)]
    lines += ["    </Ports>", "    <Connectors>"]
    for i in range(count):
        ring = f'startPort="p{i}" endPort="p{(i + 1) % count}" type="scale"'
        if parameters:
            lines.append(f"      <Connector {ring}>")
            lines.append('        <Parameter name="gain" value="0.5"/>')
            lines.append("      </Connector>")
        else:
            lines.append(f"      <Connector {ring}/>")
    lines += ["    </Connectors>", "  </Program>", "</ConfigurableProgram>", ""]
    return "\n".join(lines)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("count", type=int, help="number of ports, and of connectors")
    parser.add_argument("--type", default="StartUp", help="the program type (default StartUp)")
    parser.add_argument("--output", help="file to write (default: standard output)")
    parser.add_argument("--no-parameters", action="store_true", help="connectors without the gain parameter")
    arguments = parser.parse_args()
    if arguments.count < 1:
        parser.error("the count must be at least 1")
    text = document(arguments.count, arguments.type, not arguments.no_parameters)
    if arguments.output:
        with open(arguments.output, "w", encoding="utf-8") as stream:
            stream.write(text)
    else:
        sys.stdout.write(text)


if __name__ == "__main__":
    main()
