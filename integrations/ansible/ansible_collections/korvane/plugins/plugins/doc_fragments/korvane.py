# -*- coding: utf-8 -*-
# The options every Korvane module takes: where the library lies and which KorvaneCMD reads it.

from __future__ import absolute_import, division, print_function
__metaclass__ = type


class ModuleDocFragment(object):
    DOCUMENTATION = r'''
options:
  root:
    description:
      - The system root, the folder that holds C(Library).
      - Default is C(KorvaneCMD)'s own, C($KORVANE_ROOT) or C(/).
    type: path
  home:
    description:
      - The home folder whose user plug-ins are used.
      - Default is C(KorvaneCMD)'s own, C($HOME) of the user the task runs as.
    type: path
  korvanecmd:
    description:
      - Path of C(KorvaneCMD). Default is the one found on C(PATH).
    type: path
'''
