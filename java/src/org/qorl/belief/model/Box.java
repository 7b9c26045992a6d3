package org.qorl.belief.model;

/**
 * Place and extent of a drawing on a diagram, in pixels, y downwards.
 *
 * @param centerX horizontal centre
 * @param centerY vertical centre
 * @param width whole width
 * @param height whole height
 */
public record Box(int centerX, int centerY, int width, int height) {}
