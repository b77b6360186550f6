import { describe, expect, it } from "vitest";
import { defaultsOf, without } from "@/api/configuration";
import { tagsOf } from "@/algorithms/tags";
import { parseRoute, routeTo } from "@/common/route";
import { fixed, rangeText, title, titleOfPath, valueText } from "@/lib/text";

describe("texts for people", () => {
    it("are made of names", () => {
        expect(["minimum_area", "PrivacyMask", "Motion", "height_m"].map(title)).toEqual([
            "Minimum area",
            "Privacy mask",
            "Motion",
            "Height m",
        ]);
        expect(titleOfPath("settings.Motion.minimum_area")).toBe("Motion \u203a Minimum area");
        expect(titleOfPath("source")).toBe("Source");
    });

    it("are made of values", () => {
        expect([true, false, "", "a", 1.5, [], ["a", 1], null, undefined].map((value) => valueText(value))).toEqual([
            "on",
            "off",
            "empty",
            "a",
            "1.5",
            "none",
            "a, 1",
            "nothing",
            "nothing",
        ]);
    });

    it("are made of ranges and numbers", () => {
        expect(rangeText({ minimum: 1, maximum: 5 })).toBe("1 to 5");
        expect(rangeText({ minimum: 0 })).toBe("at least 0");
        expect(rangeText({ maximum: 5 })).toBe("at most 5");
        expect(rangeText({})).toBeUndefined();
        expect([fixed(1.234, 1), fixed(null, 2), fixed(undefined, 2)]).toEqual(["1.2", "\u2013", "\u2013"]);
    });
});

describe("the address of a view", () => {
    it("is read back as it was made", () => {
        for (const parts of [["streams"], ["streams", "gate-2", "settings"], ["a b/c", "%"]])
            expect(parseRoute(routeTo(...parts))).toEqual(parts);
    });

    it("may be anything that a person types", () => {
        expect(parseRoute("")).toEqual([]);
        expect(parseRoute("#streams//gate/")).toEqual(["streams", "gate"]);
        expect(parseRoute("#/%zz")).toEqual(["%zz"]);
    });
});

describe("what an algorithm tells apart", () => {
    it("is a list of words, or of words with colours", () => {
        expect(tagsOf(["red", "blue"])).toEqual([{ text: "red" }, { text: "blue" }]);
        expect(tagsOf({ blue: { r: 0, g: 0, b: 255 } })).toEqual([{ text: "blue", colour: "rgb(0 0 255)" }]);
        for (const other of ["red", 3, null, { blue: 3 }, { blue: { r: 0 } }]) expect(tagsOf(other)).toBeUndefined();
    });
});

describe("a schema", () => {
    const schema = {
        properties: {
            Motion: { type: "object", properties: { threshold: { default: 6 }, zones: { default: "" }, none: {} } },
            info: { type: "object", properties: {} },
        },
    } as const;

    it("tells its defaults", () => {
        expect(defaultsOf(schema as never)).toEqual({ Motion: { threshold: 6, zones: "" }, info: {} });
    });

    it("can do without some of its members", () => {
        expect(Object.keys(without(schema as never, ["info"]).properties ?? {})).toEqual(["Motion"]);
    });
});
