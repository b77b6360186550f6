/** A position in a picture, in its pixels from the top left corner. */
export type Point = readonly [x: number, y: number];
export interface Size {
    width: number;
    height: number;
}

export function distance(a: Point, b: Point): number {
    return Math.hypot(a[0] - b[0], a[1] - b[1]);
}

/** The nearest position within the picture, rounded to a tenth of a pixel. */
export function clamp(point: Point, size: Size): Point {
    const limit = (value: number, end: number) => Math.round(Math.min(Math.max(value, 0), end - 1) * 10) / 10;
    return [limit(point[0], size.width), limit(point[1], size.height)];
}

/** The position in the picture of a place on the screen; box: where the picture is shown. */
export function toPicture(at: { clientX: number; clientY: number }, box: DOMRect, size: Size): Point {
    return clamp(
        [((at.clientX - box.left) / box.width) * size.width, ((at.clientY - box.top) / box.height) * size.height],
        size,
    );
}

/** Where an arrow key moves to: a pixel, ten with Shift; nothing for other keys. */
export function nudge(point: Point, key: string, shift: boolean, size: Size): Point | undefined {
    const step = shift ? 10 : 1;
    const moves: Record<string, Point> = {
        ArrowLeft: [-step, 0],
        ArrowRight: [step, 0],
        ArrowUp: [0, -step],
        ArrowDown: [0, step],
    };
    const move = Object.hasOwn(moves, key) ? moves[key] : undefined;
    return move && clamp([point[0] + move[0], point[1] + move[1]], size);
}

/** The part of the line through two points that lies within the picture; nothing when it misses it. */
export function clipLine(from: Point, to: Point, size: Size): [Point, Point] | undefined {
    const [dx, dy] = [to[0] - from[0], to[1] - from[1]];
    let [start, end] = [0, 1];
    for (const [change, room] of [
        [-dx, from[0]],
        [dx, size.width - from[0]],
        [-dy, from[1]],
        [dy, size.height - from[1]],
    ] as const) {
        if (change === 0 && room < 0) return undefined;
        if (change < 0) start = Math.max(start, room / change);
        if (change > 0) end = Math.min(end, room / change);
    }
    const along = (share: number): Point => [from[0] + share * dx, from[1] + share * dy];
    return start < end ? [along(start), along(end)] : undefined;
}
