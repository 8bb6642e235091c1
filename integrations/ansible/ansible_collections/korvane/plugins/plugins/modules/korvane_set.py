#!/usr/bin/python
# -*- coding: utf-8 -*-
# Copyright (c) 2026 Velmora
# MIT License (see LICENSE at the top of the Korvane repository)

from __future__ import absolute_import, division, print_function

__metaclass__ = type

DOCUMENTATION = r'''
---
module: korvane_set
short_description: Switch audio plug-ins on and off with KorvaneCMD
version_added: 1.0.0
description:
  - Brings one plug-in format of a machine to a wanted state, given as a Korvane set document
    or as lists of names, by running C(KorvaneCMD) with an argument list (never through a shell).
  - A plug-in is off while it lies in the folder beside its format's folder whose name ends in
    C(" (Disabled)"); switching it moves it, companion content along where Korvane's
    preferences say so.
    Nothing is ever deleted; whatever a move puts in the trash is returned as a warning.
  - In check mode C(KorvaneCMD --check) scans and reports every move it would make, and moves
    nothing.
  - A name that matches no installed plug-in fails the task before anything moves.
author:
  - Velmora (@velmora)
options:
  format:
    description:
      - The plug-in format, as C(KorvaneCMD) names it (in any case), one of
        C(au), C(rtas), C(mas) or C(vst); on Linux C(lv2), C(vst3), C(clap), C(ladspa),
        C(dssi) or C(lxvst) (Linux VST 2); in the macOS layout C(vst3-mac), C(clap-mac),
        C(lv2-mac) or C(aax).
    type: str
    required: true
  set:
    description:
      - Path of a set document of the format (for example C(Live.aukorv)) on the managed machine.
      - Cannot be combined with I(enabled), I(disabled) or I(only).
    type: path
  enabled:
    description:
      - Names of plug-ins to switch on, as C(KorvaneCMD list) shows them (C(Foo.component)) or
        without their extension (C(Foo)) where no plug-in has that exact name. Every copy of a
        name is switched.
    type: list
    elements: str
  disabled:
    description:
      - Names of plug-ins to switch off, as for I(enabled).
    type: list
    elements: str
  only:
    description:
      - Switch off every plug-in of the format that is not named in I(enabled).
    type: bool
    default: false
extends_documentation_fragment:
  - korvane.plugins.korvane
  - ansible.builtin.action_common_attributes
attributes:
  check_mode:
    support: full
  diff_mode:
    support: full
    details: The names of the format's plug-ins that are on, before and after.
  platform:
    platforms: posix
notes:
  - C(KorvaneCMD) waits for another program moving plug-ins (Korvane or KorvaneCMD) up to
    C($KORVANE_LOCK_WAIT_MS) milliseconds, ten seconds by default, and then fails.
seealso:
  - module: korvane.plugins.korvane_facts
'''

EXAMPLES = r'''
- name: Apply the room's set document
  korvane.plugins.korvane_set:
    format: au
    set: /Library/Korvane/room-a.aukorv

- name: Only the Audio Units of the course are on
  korvane.plugins.korvane_set:
    format: au
    enabled:
      - Aurora Synth
      - Granite Pad.component
    only: true

- name: The flanger is off, everything else of the VST plug-ins as it is
  korvane.plugins.korvane_set:
    format: vst
    disabled:
      - Jade Flanger.vst
'''

RETURN = r'''
changed:
  description: Whether plug-ins moved (in check mode, whether they would).
  returned: always
  type: bool
moves:
  description: Each move made, or in check mode each move that would be made.
  returned: always
  type: list
  elements: dict
  contains:
    name:
      description: The plug-in's file name.
      type: str
      sample: Basalt Compressor.component
    format:
      description: The format, as Korvane writes it.
      type: str
      sample: AU
    from:
      description: Where the plug-in lay.
      type: str
      sample: /Library/Audio/Plug-Ins/Components/Basalt Compressor.component
    to:
      description: Where it went, or would go.
      type: str
      sample: /Library/Audio/Plug-Ins/Components (Disabled)/Basalt Compressor.component
    action:
      description: C(enable), C(disable), C(move to system), C(move to user), or two joined by C( and ).
      type: str
      sample: disable
    outcome:
      description: C(done), C(would) (check mode), C(failed), C(refused) (another installed copy lies at the target) or C(stopped).
      type: str
      sample: done
    error:
      description: Why the move failed.
      type: str
      returned: when the move failed
  sample:
    - name: Basalt Compressor.component
      format: AU
      from: /Library/Audio/Plug-Ins/Components/Basalt Compressor.component
      to: /Library/Audio/Plug-Ins/Components (Disabled)/Basalt Compressor.component
      action: disable
      outcome: done
before:
  description: The names of the format's plug-ins that were on before the task.
  returned: when KorvaneCMD scanned the plug-ins
  type: list
  elements: str
  sample: [Aurora Synth.component, Basalt Compressor.component]
after:
  description: The names of the format's plug-ins that are on after the task (in check mode, would be).
  returned: when KorvaneCMD scanned the plug-ins
  type: list
  elements: str
  sample: [Aurora Synth.component]
rc:
  description: KorvaneCMD's exit status.
  returned: always
  type: int
  sample: 0
'''

from ansible.module_utils.basic import AnsibleModule
from ansible_collections.korvane.plugins.plugins.module_utils.korvane import (
    COMMON_ARGUMENT_SPEC, diff_of, failure_message, on_names, parse_report, set_command,
    succeeded, wanted_state_problem)


def main():
    argument_spec = dict(
        format=dict(type='str', required=True),
        set=dict(type='path'),
        enabled=dict(type='list', elements='str'),
        disabled=dict(type='list', elements='str'),
        only=dict(type='bool', default=False),
    )
    argument_spec.update(COMMON_ARGUMENT_SPEC)
    module = AnsibleModule(argument_spec=argument_spec, supports_check_mode=True)
    params = module.params

    problem = wanted_state_problem(params)
    if problem:
        module.fail_json(msg=problem)
    korvanecmd = params['korvanecmd'] or module.get_bin_path('KorvaneCMD', required=True)

    rc, stdout, stderr = module.run_command(set_command(korvanecmd, params, module.check_mode))
    report = parse_report(stdout) or {}
    result = dict(
        changed=bool(report.get('changed')),
        moves=report.get('moves', []),
        rc=rc,
    )
    if report.get('before'):
        result['before'] = on_names(report, 'before', params['format'])
        result['after'] = on_names(report, 'after', params['format'])
        if module._diff:
            result['diff'] = diff_of(report, params['format'])
    for warning in report.get('warnings', []):
        module.warn(warning)
    if not succeeded(rc, module.check_mode):
        module.fail_json(msg=failure_message(rc, report, stderr), stderr=stderr, **result)
    module.exit_json(**result)


if __name__ == '__main__':
    main()
