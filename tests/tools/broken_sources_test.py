"""Each way of getting a source wrong gives its own message, at its own line."""

from unittest import TestCase

from sounding import GUITAR, HEADER, problems_of, rhythm_of, rows, whole_source
from velta_content.problems import Kind

# What is replaced in a source without faults, by what, the text at whose line the message stands
# (nothing: line 1), and part of the message.
FAULTS = {
    "a rhythm without an id": ("ritmo: prueba\n", "", "", "falta la línea «ritmo:»"),
    "a rhythm without a name": ("nombre: Ritmo de prueba\n", "", "", "falta la línea «nombre:»"),
    "a rhythm without a style": ('estilo: folklore "Folklore"\n', "", "", "falta la línea «estilo:»"),
    "a rhythm without a meter": ("compás: 4/4\n", "", "", "falta la línea «compás:»"),
    "a rhythm without a tempo": ("tempo: 80 100 120\n", "", "", "falta la línea «tempo:»"),
    "a rhythm without a source": ("120\nfuente: las pruebas\n", "120\n", "", "falta la línea «fuente:»"),
    "a file of another name": ("ritmo: prueba", "ritmo: otro", "ritmo: otro", "el archivo se tiene que llamar otro.ritmo"),
    "an id with capitals": ("ritmo: prueba", "ritmo: Prueba", "ritmo: Prueba", "no sirve de identificador"),
    "a name that is only the id": ("Ritmo de prueba", "prueba", "nombre:", "el que lee el alumno"),
    "the same heading twice": ("tempo:", "nombre: Otro\ntempo:", "nombre: Otro", "«nombre» ya está en la línea 2"),
    "a style without a shown name": ('folklore "Folklore"', "folklore", "estilo:", "falta el nombre entre comillas"),
    "a meter that is none": ("4/4", "4/0", "compás:", "el compás se escribe"),
    "a meter with a tail": ("4/4", "4/4 lento", "compás:", "el compás se escribe"),
    "two tempos instead of three": ("80 100 120", "80 100", "tempo:", "el tempo son tres números"),
    "tempos that do not rise": ("80 100 120", "80 130 120", "tempo:", "en orden creciente"),
    "a tempo that nobody plays": ("80 100 120", "80 100 900", "tempo:", "no está entre 20 y 400"),
    "a decimal comma": ("groove 1: -.02", "groove 1: -0,02", "groove 1:", "los decimales van con punto"),
    "a groove beyond the bar": ("groove 1:", "groove 4:", "groove 4:", "queda fuera del compás"),
    "a groove that leans too far": ("-.02 -4", "-.5 -4", "groove 1:", "pasa de 0.12"),
    "the same place of the groove twice": ("groove 1:", "groove 0:", "-.02", "ya tiene la posición 0"),
    "a groove of one place": ("groove 1: -.02 -4\n", "", "", "el groove necesita 2"),
    "a line that means nothing": ("tempo:", "velocidad alta\ntempo:", "velocidad", "no entiendo esta línea"),
    "a layer without a source": ("gm_violin\nfuente: las pruebas\n", "gm_violin\n", "capa violin", "le falta «fuente:»"),
    "a layer without a label": ('"Violín" gm_violin', "gm_violin", "capa violin", "falta el nombre entre comillas"),
    "an instrument that does not exist": ("gm_violin", "gm_viola", "capa violin", "no existe el instrumento «gm_viola»"),
    "an instrument that nobody plays": ("capa perc", 'instrumento charango: "Charango" Folklorico 24 grabado\ncapa perc', "instrumento", "ninguna capa usa"),
    "a recording that nobody made": ("capa perc", 'instrumento arpa: "Arpa" Strings 46 grabado\ncapa perc', "instrumento", "no hay un banco grabado de «arpa»"),
    "an instrument of no category": ("capa perc", 'instrumento arpa: "Arpa" Cuerdas 46\ncapa perc', "instrumento", "categorías: Piano"),
    "a program beyond General MIDI": ("capa perc", 'instrumento arpa: "Arpa" Strings 128\ncapa perc', "instrumento", "no está entre 0 y 127"),
    "drums on a pitched instrument": ("gm_bateria percusión", "gm_piano percusión", "capa percusion", "«percusión» va con"),
    "a drum kit that is not percussion": ("gm_violin", "gm_bateria", "capa violin", "«percusión» va con"),
    "a layer of the same name": ("capa violin", "capa bajo", 'capa bajo: "Violín"', "ya está escrita"),
    "too few layers": ("capa violin", "capa bajo", "", "hacen falta 4 capas"),
    "a section with too few variants": ("Intro 2", "Normal 5", "capa", "Intro necesita 2 variantes y tiene 1"),
    "a gap in the numbers": ("Normal 4", "Normal 5", "Normal 5", "falta Normal 4"),
    "the same variant twice": ("Normal 4", "Normal 3", "Normal 3, 1 compás:\n    bombo: 0/.4@79 1", "«Normal 3» ya está escrita"),
    "a variant of no length": ("Intro 2, 1", "Intro 2, 0", "Intro 2, 0", "no está entre 1 y 16"),
    "a variant that goes on for ever": ("Intro 2, 1", "Intro 2, 9999", "Intro 2, 9999", "no está entre 1 y 16"),
    "bars that are called otherwise": ("Intro 2, 1 compás", "Intro 2, 1 vuelta", "Intro 2, 1 vuelta", "van «compases»"),
    "an empty variant": ("    bombo: 0/.4@71 1/.4@65\n", "", "Intro 1", "Intro 1 no tiene notas"),
    "two variants alike": ("0/.4@72 1/.4@66", "0/.4@71 1/.4@65", "Intro 2", "Intro 2 es igual a Intro 1"),
    "a density that falls": ("0/.4@79 1/.4@73 2/.4@67 3/.4@61", "0/.4@79", "Normal 4", "superar las 3 de Normal 3"),
    "a drum that does not exist": ("bombo: 0/.4@71", "bambo: 0/.4@71", "bambo", "no conozco el sonido «bambo»"),
    "a key beyond the drum kit": ("bombo: 0/.4@71", "88: 0/.4@71", "88: ", "no conozco el sonido «88»"),
    "a note that does not exist": ("C5: 0/.4@71", "H5: 0/.4@71", "H5", "no conozco la nota «H5»"),
    "a drum of another name": ("bombo: 0/.4@71", "caja: 0/.4@71", "caja", "no conozco el sonido «caja»; ¿será «redoblante»?"),
    "a drum with a slip": ("bombo: 0/.4@71", "redoblant: 0/.4@71", "redoblant:", "¿será «redoblante»?"),
    "a sound that stands for no drum": ("percusión\nfuente: las pruebas\n", "percusión\nfuente: las pruebas\nsonidos: k=platillo\n", "sonidos", "no conozco el sonido «platillo»; ¿será «crash»?"),
    "a section of another tongue": ("Final 1, 1", "Outro 1, 1", "Outro", "no hay una sección «Outro»: son Intro, Normal, Intermedio, Final y figura"),
    "a key that is none": ("tempo:", "velocidad: 3\ntempo:", "velocidad", "no conozco «velocidad:»"),
    "a key that no layer has": ("gm_violin\n", "gm_violin\nvolumen: 3\n", "volumen", "no conozco «volumen:»"),
    "a sung note without an octave": ("C5: 0/.4@71", "Sol: 0/.4@71", "Sol", "no conozco la nota «Sol»"),
    "a noise of another instrument": ("C5: 0/.4@71", "golpe: 0/.4@71", "golpe", "no conozco la nota «golpe»"),
    "a note without an octave": ("C5: 0/.4@71", "C: 0/.4@71", "C: ", "no conozco la nota «C»"),
    "a position beyond the bar": ("C5: 0/.4@71", "C5: 4/.4@71", "C5: 4", "la posición 4 queda fuera del compás, que dura 4"),
    "a length of nothing": ("C5: 0/.4@71", "C5: 0/0@71", "C5: 0/0@", "la duración 0 no sirve"),
    "a pitched note without a length": ("C5: 0/.4@71", "C5: 0@71", "C5: 0@", "falta la duración"),
    "a position without a note": ("C5: 0/.4@71", "0/.4@71", "    0/.4@71", "falta la nota"),
    "a velocity beyond MIDI": ("C5: 0/.4@71", "C5: 0/.4@128", "@128", "no está entre 1 y 127"),
    "a level that is not defined": ("C5: 0/.4@71", "C5: 0/.4@Q", "@Q", "«Q» no es un número"),
    "an event that is no event": ("C5: 0/.4@71", "C5: 0/.4@71&", "71&", "no entiendo «&»"),
    "the same mark twice": ("C5: 0/.4@71", "C5: 0/.4/.5@71", "/.4/.5", "no entiendo"),
    "an offset that is no leaning": ("C5: 0/.4@71", "C5: 1/.4@71(+.9)", "(+.9)", "pasa de 0.2"),
    "a note before the loop": ("C5: 0/.4@71", "C5: 0/.4@71(-.02)", "(-.02)", "Intro 1, compás 1, 0: empieza fuera de la vuelta"),
    "a note that rings on": ("C5: 0/.4@71", "C5: 0/.4@71 · 3.5/.8 E5", "3.5/.8", "0.3 tiempos después del final"),
    "a pitch struck twice at once": ("C5: 0/.4@71", "C5: 0/.4@71 0/.2@60", "0/.2@60", "C5 se toca dos veces a la vez"),
    "a drum struck twice at once": ("bombo: 0/.4@71", "bombo: 0/.4@71 · 36: 0/.2@60", "0/.2@60", "bombo se toca dos veces a la vez"),
    "a black key": ("C5: 0/.4@71", "C5: 0/.4@71 · 2/.4 F#5", "F#5", "F#5 no es de Do mayor"),
    "a note too low for its instrument": ("C5: 0/.4@71", "C5: 0/.4@71 · 2/.4 B3", "2/.4 B3", "B3 llega a F#3 en otro tono o acorde, y Violín va de G3 a E7"),
    "a note too high for its instrument": ("C5: 0/.4@71", "C5: 0/.4@71 · 2/.4 C7", "2/.4 C7", "C7 llega a F8 en otro tono o acorde"),
    "a note that only the highest keys drive out": ("C5: 0/.4@71", "C5: 0/.4@71 · 2/.4 C6", "2/.4 C6", "C6 llega a F7"),
    "a layer without a role": ("gm_violin\nfuente: las pruebas\npapel: respuesta\n", "gm_violin\nfuente: las pruebas\n", "capa violin", "le falta «papel:»"),
    "a role that does not exist": ("papel: respuesta", "papel: solo", "papel: solo", "no conozco el papel «solo»"),
    "two roles": ("papel: respuesta", "papel: respuesta\npapel: canto", "papel: canto", "ya tiene su papel"),
    "a role of drums for a violin": ("papel: respuesta", "papel: tambor", "capa violin", "«tambor» no es papel de una capa con altura"),
    "a role of strings for drums": ("papel: tambor", "papel: acordes", "capa perc", "«acordes» no es papel de una capa de percusión"),
    "a rhythm of two basses": ("papel: acordes", "papel: bajo", "", "una capa de papel «bajo», y acá hay 2"),
    "a bass with a third": ("C2: 0/.4@71 1/.4@65", "0/.4 E2@71 · 1/.4 C2@65", "0/.4 E2", "de C2 a E2 salta 15 semitonos en el grado 5 de menor"),
    "a bass that ends high": ("C2: 0/.4@71 1/.4@65", "0/.4 C2@71 · 1/.4 G2@65", "1/.4 G2", "el bajo termina en G2"),
    "a melody that leaps over other chords": ("C5: 0/.4@71 1/.4@65", "0/.4 E5@71 · 1/.4 C5@65", "capa violin", "1 de los 12 intervalos de la melodía saltan más de una octava"),
    "a leap that the layer admits, and is wider": ("papel: bajo\n", "papel: bajo\nsalto: 30\n", "salto", "no está entre 12 y 24"),
    "a mix without its sign": ("papel: bajo\n", "papel: bajo\nmezcla: 0.9\n", "mezcla", "la mezcla se escribe x0.9"),
    "a mix that drowns all": ("papel: bajo\n", "papel: bajo\nmezcla: x9\n", "mezcla", "la mezcla va de x0.2 a x3"),
    "a mix of a role that is none": ("papel: bajo\n", "papel: bajo\nmezcla: x0.9 caja=x1.1\n", "mezcla", "no conozco el papel «caja»"),
    "a note that is hardly heard": ("C5: 0/.4@71", "C5: 0/.4@12", "@12", "la fuerza 12 no llega a 20"),
    "a note that is too loud": ("C5: 0/.4@71", "C5: 0/.4@126", "@126", "la fuerza 126 pasa de 120"),
    "velocities that do not breathe": ("C5: 0/.4@71 1/.4@65", "C5: 0/.4@70 1/.4@70 2/.4@70", "70 2/.4@70", "hacen falta acentos"),
    "a bar that the variant does not have": ("C5: 0/.4@71", "b3 C5: 0/.4@71", "b3", "la variante tiene compases del 1 al 1"),
    "a grid that does not end": ("C5: 0/.4@71 1/.4@65", "C5 | x . x .", "C5 |", "la grilla termina con «|»"),
    "a letter that is no level": ("C5: 0/.4@71 1/.4@65", "C5 | x q x . |", "C5 |", "«q» no es un nivel"),
    "a grid that begins with a held note": ("C5: 0/.4@71 1/.4@65", "C5 | - . x . |", "C5 |", "antes no suena nada"),
    "a grid of too many bars": ("C5: 0/.4@71 1/.4@65", "C5 | x . | . x |", "C5 |", "hay 2 compases escritos y la variante tiene 1"),
    "an empty bar in a grid": ("C5: 0/.4@71 1/.4@65", "C5 |  |", "C5 |", "un compás tiene de 1 a 96 casillas"),
    "a strum that is no stroke": ("C5: 0/.4@71 1/.4@65", "rasgueo G-high | D . E5 . |", "rasgueo", "en un rasgueo van D, U o X"),
    "a quotation of nothing": ("C5: 0/.4@71", "= Normal 7\nC5: 0/.4@71", "= Normal 7", "no hay «Normal 7»"),
    "a quotation of a layer that is not there": ("C5: 0/.4@71", "= arpa.Normal 1\nC5: 0/.4@71", "= arpa", "no hay una capa «arpa»"),
    "a melody quoted from drums": ("C5: 0/.4@71", "= percusion.Normal 1\nC5: 0/.4@71", "= perc", "no se puede copiar entre percusión"),
    "a quotation with a strange change": ("C5: 0/.4@71", "= Normal 1 tempo +3\nC5: 0/.4@71", "= Normal 1 tempo", "van fuerza u octava"),
    "a force that is no number": ("C5: 0/.4@71", "fuerza mucha\nC5: 0/.4@71", "fuerza mucha", "la fuerza se cambia con"),
    "an octave for drums": ("bombo: 0/.4@71", "octava +1\nbombo: 0/.4@71", "octava", "la percusión no tiene octavas"),
    "nothing to take away": ("C5: 0/.4@71", "quitar D5\nC5: 0/.4@71", "quitar", "no hay nada que quitar"),
    "a crescendo without its ends": ("C5: 0/.4@71", "crece +8\nC5: 0/.4@71", "crece", "se escribe: crece -8 +8"),
    "a chord with a strange note": ("capa perc", "acorde K: [C4 H4]\ncapa perc", "acorde", "las notas del acorde se escriben"),
    "a level that is a word": ("capa perc", "niveles: fuerte=90\ncapa perc", "niveles", "un nivel es una sola letra"),
    "a strum that takes a second": ("gm_violin\n", "gm_violin\nrasgueo: 900 7 6\n", "rasgueo", "de 0 a 60 milisegundos"),
    "music before any variant": ("gm_violin\n", "gm_violin\n0/.4 C5\n", "0/.4 C5", "el comienzo de una variante"),
}


@rows(FAULTS)
class Faults(TestCase):
    maxDiff = None

    def row(self, former, present, place, message):
        text = whole_source()
        self.assertIn(former, text)
        text = text.replace(former, present, 1) if former != "capa violin" else text.replace(former, present)
        line = text[: text.index(place)].count("\n") + 1 if place else 1
        found = problems_of(text)
        self.assertTrue([said for at, said in found if at == line and message in said], (line, found))


class AllAtOnce(TestCase):
    def test_all_faults_are_told_and_not_only_the_first(self):
        text = whole_source().replace("4/4", "4/0").replace("gm_violin", "gm_viola").replace("80 100 120", "1 2 3")
        told = " ".join(message for _, message in problems_of(text))
        for part in ("el compás se escribe", "no existe el instrumento", "no está entre 20 y 400"):
            self.assertIn(part, told)

    def test_what_is_wrong_comes_in_the_order_of_lines_and_what_is_missing_after_it(self):
        text = whole_source().replace("C5:", "H5:").replace("bombo:", "bambo:").replace("fuente: las pruebas\n", "")
        found = sorted(rhythm_of(text).problems.found)
        faults = [problem.line for problem in found if problem.kind is Kind.FAULT]
        missing = [problem.line for problem in found if problem.kind is Kind.MISSING]
        self.assertEqual([problem.line for problem in found], faults + missing)
        self.assertEqual((faults, missing), (sorted(faults), sorted(missing)))
        self.assertGreater(len(faults), 10)
        self.assertGreater(len(missing), 4)

    def test_a_passing_note_that_lasts_is_advice_and_no_fault(self):
        text = whole_source().replace("C5: 0/.4@71", "C5: 0/.4@71 · 2/.9 F5", 1)
        self.assertEqual(problems_of(text), [])

    def test_cells_that_fall_on_no_pulse_are_told_as_advice(self):
        def odd(cells, meter):
            line = "C5 | " + "x" + (cells - 1) * "." + " |"
            text = HEADER.format(meter=meter) + GUITAR + f"Normal 1, 1 compás:\n{line}\n"
            return [p for p in rhythm_of(text).problems.found if "casillas" in p.message and p.warning]

        for meter, fine in (("4/4", (1, 2, 4, 8, 12, 16, 24)), ("3/4", (1, 2, 3, 4, 6, 9, 12)), ("2/4", (1, 2, 4, 6, 8)),
                            ("6/8", (1, 2, 3, 4, 6, 12)), ("9/8", (3, 9, 18)), ("12/8", (4, 12, 24))):
            for cells in range(1, 25):
                with self.subTest(meter=meter, cells=cells):
                    if cells in fine:
                        self.assertEqual(odd(cells, meter), [])
                    if cells in (5, 7, 11, 13) or (cells == 9 and meter in ("4/4", "2/4", "6/8")):
                        self.assertEqual(len(odd(cells, meter)), 1)

    def test_what_a_layer_lacks_stands_in_one_line(self):
        text = HEADER.format(meter="4/4") + GUITAR + "Normal 2, 1 compás:\n0/.4 C4@70\n"
        line = text[: text.index("capa")].count("\n") + 1
        self.assertEqual([message for at, message in problems_of(text) if at == line],
                         ["Intro necesita 2 variantes y tiene 0; Normal necesita 4 variantes y tiene 1; "
                          "Intermedio necesita 2 variantes y tiene 0; Final necesita 2 variantes y tiene 0"])

    def test_a_held_chord_needs_no_accents(self):
        text = whole_source().replace("C4: 0/.4@71 1/.4@65", "0/3.8 G-high@70")
        self.assertEqual(problems_of(text), [])

    def test_a_layer_may_admit_a_wider_leap(self):
        text = whole_source().replace("C2: 0/.4@71 1/.4@65", "0/.4 A2@71 · 1/.4 G2@66 · 2/.4 C2@62")
        leaps = [message for _, message in problems_of(text) if "salta" in message]
        self.assertEqual(leaps, ["Intro 1, compás 1, 0: de C2 a A2 salta 20 semitonos en el grado 5 de menor",
                                 "Intro 1, compás 1, 1: de A2 a G2 salta 13 semitonos en el grado 5 de menor"])
        wider = problems_of(text.replace("papel: bajo", "papel: bajo\nsalto: 20"))
        self.assertEqual([message for _, message in wider if "salta" in message], [])

    def test_some_leap_in_a_long_melody_is_advice(self):
        long_line = " ".join(f"{beat / 8}/.1@{66 + beat % 7}" for beat in range(31)) + " 3.875/.1 E5@60"
        text = whole_source().replace("C5: 0/.4@71 1/.4@65", "C5: " + long_line)
        self.assertEqual(problems_of(text), [])
        advice = [problem.message for problem in rhythm_of(text).problems.found if problem.warning]
        self.assertEqual(advice, ["Intro 1, compás 1, 3.875: de C5 a E5 salta 15 semitonos en el grado 5 de menor"])

    def test_lengths_that_never_meet_are_told_as_advice(self):
        text = whole_source()
        at = text.index("capa violin")
        text = text[:at].replace("Normal 2, 1 compás", "Normal 2, 2 compases") + text[at:].replace("Normal 2, 1 compás", "Normal 2, 3 compases")
        advice = [problem.message for problem in rhythm_of(text).problems.found if problem.warning]
        self.assertEqual(advice, ["Normal 2 dura 3 compases y en otra capa 2: no caen juntos"])

    def test_noises_of_a_recorded_guitar_are_neither_out_of_key_nor_out_of_range(self):
        text = whole_source().replace("gm_guitarra_nylon", "guitarra_criolla").replace(
            "capa perc", 'instrumento guitarra_criolla: "Guitarra criolla" Folklorico 24 grabado\ncapa perc', 1)
        text = text.replace("C4: 0/.4@71", "golpe: 0@80 · chasquido: 2@70 · C4: 0/.4@71", 1)
        self.assertEqual(problems_of(text), [])

    def test_a_chromatic_layer_may_leave_the_white_keys(self):
        text = whole_source().replace("C5: 0/.4@71", "C5: 0/.4@71 · 2/.4 F#5", 1)
        self.assertEqual(problems_of(text.replace("gm_violin", "gm_violin cromática")), [])
