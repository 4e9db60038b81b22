"""Area functions of vowels as tubes of equal sections, and tubes as log-area ratios.

The area functions (cm^2, from the lips to the glottis, one value every 0.5 cm) and the formants that
were calculated for them are those of the six Russian vowels in G. Fant, Acoustic Theory of Speech
Production (Mouton, The Hague 1960), section 2.3. `resonances` calculates formants from the areas
in a way of its own, which the tests hold against the published ones.

Needs numpy.
"""

import numpy as np

SOUND_SPEED = 35300.0  # cm/s, in the warm and moist air of the vocal tract
AREA_STEP = 0.5  # cm
GLOTTIS_RATIO = 5.0  # log2 of the area above the glottis to the glottis's own
WALL_BANDWIDTH = 40.0  # Hz

AREAS = {
    "a": "5 5 5 5 6.5 8 8 8 8 8 8 8 8 6.5 5 4 3.2 1.6 2.6 2.6 2 1.6 1.3 1 .65 .65 .65 1 1.6 2.6 4 1"
    " 1.3 1.6 2.6",
    "e": "8 8 5 5 4 2.6 2 2.6 2.6 3.2 4 4 4 5 5 6.5 8 6.5 8 10.5 10.5 10.5 10.5 10.5 8 8 6.5 6.5 6.5"
    " 6.5 1.3 1.6 2 2.6",
    "i": "4 4 3.2 1.6 1.3 1 .65 .65 .65 .65 .65 .65 .65 1.3 2.6 4 6.5 8 8 10.5 10.5 10.5 10.5 10.5"
    " 10.5 10.5 10.5 10.5 8 8 2 2 2.6 3.2",
    "o": "3.2 3.2 3.2 3.2 6.5 13 13 16 13 10.5 10.5 8 8 6.5 6.5 5 5 4 3.2 2 1.6 2.6 1.3 .65 .65 1 1"
    " 1.3 1.6 2 3.2 4 5 5 1.3 1.3 1.6 2.6",
    "u": ".65 .65 .32 .32 2 5 10.5 13 13 13 13 10.5 8 6.5 5 3.2 2.6 2 2 2 1.6 1.3 2 1.6 1 1 1 1.3 1.6"
    " 3.2 5 8 8 10.5 10.5 10.5 2 2 2.6 2.6",
    "ɨ": "6.5 6.5 2 6.5 8 8 8 5 3.2 2.6 2 2 1.6 1.3 1 1 1.3 1.6 2.6 2 4 5 6.5 6.5 8 10.5 10.5 10.5"
    " 10.5 10.5 13 13 10.5 10.5 6 3.2 3.2 3.2 3.2",
}

# F1 and F2 in Hz, calculated from the area functions in the same book.
FORMANTS = {
    "a": (616, 1072),
    "e": (432, 1959),
    "i": (222, 2244),
    "o": (510, 866),
    "u": (231, 615),
    "ɨ": (286, 1530),
}


def areas(vowel):
    return np.array([float(area) for area in AREAS[vowel].split()])


def end_correction(lip_area):
    """How much longer (cm) a tube sounds for the air that moves with it before its open end."""
    return 0.8 * np.sqrt(lip_area / np.pi)


def sections(vowel, rate):
    """The areas of equal sections, lips first, each as long as sound goes in half a sample.

    The air before the lips counts as part of the tube. The number of sections is the nearest whole
    one. A section's area keeps the quotient of the mass and the compliance of the air in it.
    """
    table = areas(vowel)
    ends = end_correction(table[0]) + AREA_STEP * np.arange(1, len(table) + 1)
    count = round(ends[-1] / (SOUND_SPEED / (2 * rate)))
    fine = 1000
    places = (np.arange(count * fine) + 0.5) / (count * fine) * ends[-1]
    pieces = table[np.searchsorted(ends, places)].reshape(count, fine)
    return np.sqrt(pieces.mean(axis=1) / (1 / pieces).mean(axis=1))


def reflections(ratios):
    """Reflection coefficients from log-area ratios of base 2."""
    exponentials = 2.0 ** np.asarray(ratios)
    return (exponentials - 1) / (exponentials + 1)


def predictor(ratios):
    """The polynomial whose inverse is the tract filter, by the step-up recursion (J. D. Markel and
    A. H. Gray, Linear Prediction of Speech, Springer 1976)."""
    a = np.array([1.0])
    for k in reflections(ratios):
        longer = np.append(a, 0.0)
        a = longer + k * longer[::-1]
    return a


def log_area_ratios(a):
    """The other way: log-area ratios of base 2 from a predictor, by the step-down recursion."""
    ratios = []
    while len(a) > 1:
        k = a[-1]
        ratios.insert(0, np.log2((1 + k) / (1 - k)))
        a = ((a - k * a[::-1]) / (1 - k * k))[:-1]
    return np.array(ratios)


def poles(a, rate):
    """Frequencies and bandwidths (Hz) of the poles above zero frequency, the lowest first."""
    roots = np.roots(a)
    roots = roots[roots.imag > 1e-9]
    roots = roots[np.argsort(np.angle(roots))]
    return np.angle(roots) * rate / (2 * np.pi), -np.log(np.abs(roots)) * rate / np.pi


def vowel_ratios(vowel, rate):
    """A vowel's log-area ratios, from the lips to the glottis.

    The tube's own ratios have no losses. The last one, from the section above the glottis to an all
    but closed glottis, lets a little sound out; the walls and the friction of the air are made up
    for by widening each resonance by the same bandwidth, for which the ratios change a little.
    """
    tube = sections(vowel, rate)
    a = predictor(np.append(np.log2(tube[:-1] / tube[1:]), GLOTTIS_RATIO))
    radius = np.exp(-np.pi * WALL_BANDWIDTH / rate)
    return log_area_ratios(a * radius ** np.arange(len(a)))


def resonances(vowel, highest=5000.0):
    """Frequencies (Hz) at which the loss-free table tube, closed at the glottis, sounds: the zeros
    of the denominator of its volume velocity transfer, by the transmission line equations."""
    table = areas(vowel)
    frequencies = np.arange(20.0, highest, 0.5)
    wave = 2 * np.pi * frequencies / SOUND_SPEED
    c, d = np.zeros_like(wave), np.ones_like(wave)  # c without its factor j
    for area in table[::-1]:
        cosine, sine = np.cos(wave * AREA_STEP), np.sin(wave * AREA_STEP)
        c, d = c * cosine + d * sine * area, d * cosine - c * sine / area
    load = np.tan(wave * end_correction(table[0])) / table[0]
    denominator = d - c * load
    return frequencies[:-1][np.sign(denominator[1:]) != np.sign(denominator[:-1])]
