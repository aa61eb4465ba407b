"""With OpenCV, whose images are NumPy arrays: nothing is copied on the way in or out."""

import cv2
import numpy as np

import korvex2

# A mosaic of a gradient from blue to red, with a white disc.
scene = np.zeros((480, 640, 3), np.uint8)
scene[..., 0] = np.linspace(255, 0, 640)
scene[..., 2] = np.linspace(0, 255, 640)
cv2.circle(scene, (320, 240), 100, (255, 255, 255), -1)
mosaic = scene[..., 1].copy()  # green everywhere, but
mosaic[0::2, 0::2] = scene[0::2, 0::2, 2]  # red at the top left of each tile
mosaic[1::2, 1::2] = scene[1::2, 1::2, 0]  # and blue at its bottom right

picture = np.empty_like(scene)
korvex2.convert(mosaic, to="bgr8", from_="raw8", tile="rggb", method="directional", out=picture)
print("PSNR:", round(cv2.PSNR(scene, picture)), "dB")

# OpenCV's names of tiles begin at the second row and column: its BayerBG is RGGB.
theirs = cv2.cvtColor(mosaic, cv2.COLOR_BayerBG2BGR)
print("OpenCV's bilinear:", round(cv2.PSNR(scene, theirs)), "dB")

uyvy = korvex2.convert(picture, to="uyvy", from_="bgr8")  # 480 rows of 640 x 2 bytes
back = cv2.cvtColor(uyvy.reshape(480, 640, 2), cv2.COLOR_YUV2BGR_UYVY)  # video range, where ours is full
print(uyvy.shape, back.shape)
