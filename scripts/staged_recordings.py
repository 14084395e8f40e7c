"""Recordings made of other recordings with ffmpeg: small in a large picture, and after or between still pauses."""
import pathlib
import subprocess

PLACES = [(x, y) for y in (80, 620) for x in (100, 800, 1500)]  # of a small picture in a large one
SMALL_WIDTH = 320
LARGE = (1920, 1080)
PIECE = 1.5   # seconds of movement between two pauses
PIECES = 40


def ffmpeg(*words):
    subprocess.run(["ffmpeg", "-v", "error", "-nostdin", "-y", *map(str, words)], check=True)


def shape_of(recording):
    """Width, height, and pictures a second as ffmpeg writes them."""
    text = subprocess.run(["ffprobe", "-v", "error", "-select_streams", "v:0", "-show_entries",
                           "stream=width,height,avg_frame_rate", "-of", "csv=p=0", recording],
                          check=True, stdout=subprocess.PIPE, text=True).stdout
    width, height, rate = text.strip().strip(",").split(",")[:3]
    return int(width), int(height), rate


def shown_small(recording, index, seconds, out):
    """The first seconds, 320 pixels wide, at one of six places of a still picture. Returns the map of a box's parts."""
    left, top = PLACES[index % len(PLACES)]
    width, height, rate = shape_of(recording)
    small_height = round(SMALL_WIDTH * height / width / 2) * 2
    ffmpeg("-t", seconds, "-i", recording, "-filter_complex",
           f"[0:v]scale={SMALL_WIDTH}:{small_height}[small];color=c=0x505860:s={LARGE[0]}x{LARGE[1]}:r={rate}[still];"
           f"[still][small]overlay={left}:{top}:shortest=1",
           "-c:v", "libx264", "-preset", "ultrafast", "-crf", 14, out)

    def moved(box):
        parts = [float(part) for part in box.split()]
        scale = (SMALL_WIDTH / LARGE[0], small_height / LARGE[1]) * 2
        start = (left / LARGE[0], top / LARGE[1]) * 2
        return " ".join(f"{s + part * by:.5f}" for part, by, s in zip(parts, scale, start))
    return moved


def encoded(source, out, then=""):
    """Pieces that can be joined without coding them again have one size and one time base."""
    ffmpeg(*source, "-vf", f"scale=352:-2,setsar=1{then},format=yuv420p", "-an", "-c:v", "libx264", "-preset", "ultrafast",
           "-crf", 14, "-video_track_timescale", 90000, out)


def joined(parts, out):
    names = out.with_suffix(".txt")
    names.write_text("".join(f"file '{part}'\n" for part in parts), encoding="utf-8")
    ffmpeg("-f", "concat", "-safe", 0, "-i", names, "-c", "copy", out)


def still_of(recording, at, seconds, folder):
    """One picture of the recording for so long, once a second, with a sensor's noise: what only repeats is not looked at."""
    picture = folder / "still.png"
    ffmpeg("-ss", at, "-i", recording, "-frames:v", 1, picture)
    out = folder / f"still-{seconds}.mp4"
    encoded(("-loop", 1, "-framerate", 1, "-t", seconds, "-i", picture), out, ",noise=alls=5:allf=t")
    return out


def cut_by_pauses(recording, length, pause, folder, out):
    """40 pieces of 1.5 seconds, the recording over and over, a still pause after each."""
    pieces = []
    for number in range(max(1, int(length / PIECE))):
        pieces.append(folder / f"piece-{number}.mp4")
        encoded(("-ss", number * PIECE, "-t", PIECE, "-i", recording), pieces[-1])
    still = still_of(recording, max(0, length - 0.5), pause, folder)
    joined([part for number in range(PIECES) for part in (pieces[number % len(pieces)], still)], out)


def after_pause(recording, pause, folder, out):
    """The recording after its first picture has stood still."""
    whole = folder / "whole.mp4"
    if not whole.exists():
        encoded(("-i", recording), whole)
    joined([still_of(recording, 0, pause, folder), whole], out)
