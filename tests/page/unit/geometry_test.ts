import { describe, expect, it } from "vitest";
import { clamp, clipLine, distance, nudge, toPicture, type Point } from "@/lib/geometry";

const size = { width: 768, height: 576 };

describe("positions in a picture", () => {
    it("follow its scale on the screen", () => {
        const box = { left: 10, top: 20, width: 384, height: 288 } as DOMRect;
        expect(toPicture({ clientX: 10, clientY: 20 }, box, size)).toEqual([0, 0]);
        expect(toPicture({ clientX: 110, clientY: 70 }, box, size)).toEqual([200, 100]);
        expect(toPicture({ clientX: 999, clientY: 0 }, box, size)).toEqual([767, 0]);
    });

    it("stay within it", () => {
        expect(clamp([-5, 600], size)).toEqual([0, 575]);
        expect(clamp([1.26, 2.01], size)).toEqual([1.3, 2]);
    });

    it("are moved by arrow keys, ten times as far with Shift", () => {
        expect(nudge([5, 5], "ArrowLeft", false, size)).toEqual([4, 5]);
        expect(nudge([5, 5], "ArrowDown", true, size)).toEqual([5, 15]);
        expect(nudge([5, 5], "ArrowUp", true, size)).toEqual([5, 0]);
        expect(nudge([5, 5], "Enter", false, size)).toBeUndefined();
        expect(nudge([5, 5], "toString", false, size)).toBeUndefined();
    });

    it("have distances", () => expect(distance([0, 0], [3, 4])).toBe(5));
});

describe("a line", () => {
    const cases: [string, Point, Point, [Point, Point] | undefined][] = [
        ["within the picture stays", [10, 10], [20, 30], [[10, 10], [20, 30]]],
        ["is cut at both sides", [-768, 288], [1536, 288], [[0, 288], [768, 288]]],
        ["is cut at the top", [100, -100], [100, 100], [[100, 0], [100, 100]]],
        ["beside the picture is nowhere", [-10, 0], [-10, 576], undefined],
        ["that passes a corner by is nowhere", [-100, 50], [50, -100], undefined],
    ];
    for (const [name, from, to, expected] of cases)
        it(name, () => expect(clipLine(from, to, size)).toEqual(expected));
});
