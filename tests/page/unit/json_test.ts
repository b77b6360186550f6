import { describe, expect, it } from "vitest";
import { at, equal, isObject, leaves, withValue } from "@/lib/json";

describe("a JSON value", () => {
    it("is found by its dotted path", () => {
        const value = { Motion: { threshold: 6, zones: [1, 2] } };
        expect(at(value, "Motion.threshold")).toBe(6);
        expect(at(value, "")).toBe(value);
        expect(at(value, "Motion.zones.0")).toBeUndefined();
        expect(at(value, "Motion.none.deeper")).toBeUndefined();
        expect(at(value, "Motion.constructor")).toBeUndefined();
    });

    it("is set in a copy, with the objects on the way", () => {
        const before = { a: { b: 1, c: 2 } };
        expect(withValue(before, "a.b", 3)).toEqual({ a: { b: 3, c: 2 } });
        expect(withValue(before, "x.y.z", null)).toEqual({ a: { b: 1, c: 2 }, x: { y: { z: null } } });
        expect(before).toEqual({ a: { b: 1, c: 2 } });
    });

    it("has leaves, of which a list is one", () => {
        expect(leaves({ a: { b: 1, c: [1, 2] }, d: null })).toEqual([
            ["a.b", 1],
            ["a.c", [1, 2]],
            ["d", null],
        ]);
        expect(leaves(undefined)).toEqual([]);
    });

    it("is compared by value, whatever the order of members", () => {
        expect(equal({ a: [1, { b: 2 }], c: 3 }, { c: 3, a: [1, { b: 2 }] })).toBe(true);
        expect(equal({ a: 1 }, { a: 1, b: 2 })).toBe(false);
        expect(equal([1, 2], [2, 1])).toBe(false);
        expect(equal([], {})).toBe(false);
        expect(equal(null, {})).toBe(false);
    });

    it("is an object only where it has members", () => {
        expect([{}, [], null, "a", undefined].map(isObject)).toEqual([true, false, false, false, false]);
    });
});
