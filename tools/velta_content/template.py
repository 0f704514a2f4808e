"""A rhythm to begin with: whole, plain, and explained line by line."""

from __future__ import annotations

METERS = {"4/4": (4, 2), "3/4": (3, 2), "2/4": (2, 2), "6/8": (2, 3)}

_HEAD = """\
# Un ritmo para empezar: suena, y «velta-content check» no le encuentra nada. Cambialo de a poco y
# escuchalo a menudo: tools/velta-listen --borrador {id}.ritmo <carpeta>
# Lo que sigue a # es comentario. docs/content-format.md explica cada cosa.

ritmo: {id}
nombre: {name}
{style}            # o uno tuyo
compás: {meter}
tempo: {tempo}                     # el más lento, el habitual, el más rápido; en negras
fuente: escribí acá de dónde viene el ritmo: un libro, una grabación, quien te lo enseñó

# El groove: posición en tiempos (la negra es 1), desvío en tiempos, acento. Por omisión se oye el 40 %.
groove 0: 0 +4
groove {weak}: .02 -3
"""

_DRUMS = """
# Percusión: no cambia con los acordes. En una grilla hay un carácter por golpe: X x o g, de fuerte a
# suave; el punto es silencio. Lo que se cita con «=» se suma a lo que sigue.
# El papel dice qué tan fuerte suena contra el bajo: tambor o toque, acordes, respuesta, canto…
capa percusion: "Percusión" gm_bateria percusión
fuente: escribí acá de dónde viene esta parte
{drums_role}
  Normal 1, 1 compás:
    bombo      | {first} |
  Normal 2, 1 compás:                   # la forma de todos los días: empezá por ésta
    = Normal 1
    redoblante | {others} |
  Normal 3, 1 compás:
    = Normal 2
    hihat      | {pulses} |
  Normal 4, 1 compás:
    = Normal 2
    hihat      | {cells} |
  Intro 1, 1 compás:
    hihat      | {pulses} |
  Intro 2, 1 compás:
    hihat      | {cells} |
  Intermedio 1, 1 compás:
    aro        | {pulses} |
  Intermedio 2, 1 compás:
    = Intermedio 1
    bombo      | {first} |
  Final 1, 1 compás:
    bombo: 0@104 · crash: 0@96
  Final 2, 1 compás:
    = Final 1
    redoblante | {others} |
"""

_BASS = """
# Lo que tiene altura se escribe en Do mayor sobre el grado I, y el programa lo lleva a los acordes de
# la canción. El bajo va en C2, G2 y C3 (Do2, Sol2, Do3), y termina en C2.
# Los eventos se escriben posición/duración nota@fuerza.
capa bajo: "Bajo" gm_bajo
fuente: escribí acá de dónde viene esta parte
{bass_role}
  Normal 1, 1 compás:
    0/{long} C2@84
  Normal 2, 2 compases:
    b1 0/{long} C2@84 · {half}/{short} G2@72
    b2 0/{long} C2@82
  Normal 3, 2 compases:
    0/{short} C2@86
    b1 {half}/{short} G2@74
    b2 {half}/{until} G2@74 · {last}/{brief} C2@66
  Normal 4, 1 compás:
    0/{short} C2@88 · {half}/{until} G2@76 · {last}/{brief} C2@68
  Intro 1, 1 compás:
    0/{whole} C2@80
  Intro 2, 1 compás:
    0/{short} G2@74 · {half}/{short} C2@80
  Intermedio 1, 1 compás:
    0/{short} G2@78 · {half}/{short} C2@74
  Intermedio 2, 1 compás:
    0/{whole} C2@76
  Final 1, 1 compás:
    0/{whole} C2@92
  Final 2, 1 compás:
    0/{short} C2@90 · {half}/{short} C2@84
"""

_GUITAR = """
# Un rasgueo: D para abajo, U para arriba. G-low y G-high son acordes que ya tienen nombre.
capa guitarra: "Guitarra (rasgueo)" gm_guitarra_nylon
fuente: escribí acá de dónde viene esta parte
{guitar_role}
  Normal 1, 1 compás:
    0 D/{long}@70 G-low
  Normal 2, 1 compás:
    rasgueo G-high | {strum_pulses} |
  Normal 3, 1 compás:
    rasgueo G-high | {strum_cells} |
  Normal 4, 1 compás:
    = Normal 3
    0 [C3]/{long}@76
  Intro 1, 1 compás:
    0 D/{whole}@66~.2 G-low
  Intro 2, 1 compás:
    rasgueo G-low | {strum_pulses} |
  Intermedio 1, 1 compás:
    = Normal 2 fuerza -8
  Intermedio 2, 1 compás:
    = Normal 3 fuerza -8
  Final 1, 1 compás:
    0 D/{whole}@88 G-low
  Final 2, 1 compás:
    0 D/{short}@88 G-low · {half} D/{short}@82 G-high
"""

_ANSWER = """
# Una respuesta entra donde la voz descansa: pocas notas, y un compás de silencio por lo menos. E4, G4 y
# C5 (con E4 abajo) suenan sobre todos los acordes sin saltos.
capa violin: "Violín (respuestas)" gm_violin
fuente: escribí acá de dónde viene esta parte
{answer_role}
  Normal 1, 4 compases:
    b4 0/{long} G4@62
  Normal 2, 4 compases:
    b4 0/{short} E4@66 · {half}/{short} G4@72
  Normal 3, 4 compases:
    = Normal 2
    b2 0/{long} C5@64
  Normal 4, 2 compases:
    b2 0/{short} G4@70 · {half}/{short} C5@76
  Intro 1, 2 compases:
    b1 0/{long} G4@68 b2 0/{long} E4@62
  Intro 2, 2 compases:
    b1 0/{long} C5@70 b2 0/{long} G4@64
  Intermedio 1, 2 compases:
    b1 0/{long} E4@66 b2 0/{short} G4@70 · {half}/{short} C5@74
  Intermedio 2, 2 compases:
    b1 0/{long} C5@72 b2 0/{short} G4@68 · {half}/{short} E4@64
  Final 1, 1 compás:
    0/{whole} C5@78
  Final 2, 1 compás:
    0/{short} G4@74 · {half}/{short} C5@82
"""

_ROLES = {"drums_role": "papel: toque", "bass_role": "papel: bajo", "guitar_role": "papel: acordes",
          "answer_role": "papel: respuesta"}


def _cells(pulses: int, parts: int, strong: str, weak: str, within: str) -> str:
    """A grid of a bar: the first pulse, the other pulses, and what lies between."""
    heads = [strong] + [weak] * (pulses - 1)
    return " ".join(" ".join([head] + [within] * (parts - 1)) for head in heads)


def _style_of(identifier: str) -> str:
    """The line of the style, for which ids begin with it as those of the library do."""
    style = "popular" if identifier.startswith("popular_") else "folklore"
    return f'estilo: {style} "{style.capitalize()}"'


def _name_of(identifier: str) -> str:
    """What a pupil reads, to begin with: the id without its style."""
    for style in ("folklore_", "popular_"):
        identifier = identifier.removeprefix(style) or identifier
    return identifier.replace("_", " ").capitalize()


def template(identifier: str, meter: str) -> str:
    """The text of a rhythm in one of `METERS` that breaks no rule."""
    pulses, parts = METERS[meter]
    pulse = 1.5 if parts == 3 else 1.0
    bar, half = pulses * pulse, (pulses + 1) // 2 * pulse
    lengths = {"whole": bar - 0.2, "long": half - 0.1, "short": bar - half - 0.1, "half": half,
               "last": bar - pulse / 2, "brief": pulse / 2 - 0.05,
               "until": bar - pulse / 2 - half - 0.1, "weak": pulse}
    grids = {"first": _cells(pulses, parts, "X", ".", "."), "others": _cells(pulses, parts, ".", "x", "."),
             "pulses": _cells(pulses, parts, "x", "o", "."), "cells": _cells(pulses, parts, "x", "o", "g"),
             "strum_pulses": _cells(pulses, parts, "D@74", "D@66", "."),
             "strum_cells": _cells(pulses, parts, "D@76", "D@68", "U@54")}
    words = {key: f"{value:g}" for key, value in lengths.items()} | grids | _ROLES
    words |= {"id": identifier, "name": _name_of(identifier), "style": _style_of(identifier), "meter": meter,
              "tempo": "80 100 120"}
    text = "".join([_HEAD, _DRUMS, _BASS, _GUITAR, _ANSWER]).format(**words)
    return text.replace("\n\n  ", "\n  ")
