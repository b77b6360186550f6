import { describe, expect, it } from "vitest";
import { changes, edited, emptyDraft, followed, isOwn, shown, toPatch, type Held } from "@/lib/draft";

const held: Held = {
    effective: { Motion: { threshold: 6, minimum_area: 120, zones: "" } },
    own: { Motion: { minimum_area: 120 } },
    common: { Motion: { threshold: 6, minimum_area: 400, zones: "" } },
};

/** The draft after one field of the form got a value. */
function set(name: string, value: unknown, draft = emptyDraft) {
    const before = shown(held, draft);
    const after = { Motion: { ...(before["Motion"] as object), [name]: value } };
    return edited(held, draft, before, JSON.parse(JSON.stringify(after)));
}

describe("a draft", () => {
    it("holds what was changed, and only that", () => {
        const draft = set("minimum_area", 900);
        expect([...draft]).toEqual([["Motion.minimum_area", 900]]);
        expect(shown(held, draft)).toEqual({ Motion: { threshold: 6, minimum_area: 900, zones: "" } });
        expect(changes(held, draft)).toEqual([
            { path: "Motion.minimum_area", before: 120, after: 900, follows: false },
        ]);
    });

    it("is empty again when the value in effect is entered again", () => {
        expect(set("minimum_area", 120, set("minimum_area", 900)).size).toBe(0);
        expect(set("zones", undefined, set("zones", "1,1"))).toEqual(emptyDraft);
    });

    it("keeps a field that was emptied as one without a value", () => {
        const draft = set("threshold", undefined);
        expect([...draft]).toEqual([["Motion.threshold", ""]]);
        expect([...set("minimum_area", 5, draft).keys()]).toEqual(["Motion.threshold", "Motion.minimum_area"]);
    });

    it("takes a setting back, which then shows the common value", () => {
        const draft = followed(held, emptyDraft, "Motion.minimum_area");
        expect(shown(held, draft)).toEqual({ Motion: { threshold: 6, minimum_area: 400, zones: "" } });
        expect(changes(held, draft)).toEqual([{ path: "Motion.minimum_area", before: 120, after: 400, follows: true }]);
        expect(toPatch(draft, "streams.gate.settings")).toEqual({
            streams: { gate: { settings: { Motion: { minimum_area: null } } } },
        });
        expect(isOwn(held, draft, "Motion.minimum_area")).toBe(false);
    });

    it("forgets a change of a setting that never had a value of its own when it is taken back", () => {
        const draft = set("threshold", 9);
        expect(isOwn(held, draft, "Motion.threshold")).toBe(true);
        expect(followed(held, draft, "Motion.threshold").size).toBe(0);
        expect(isOwn(held, emptyDraft, "Motion.threshold")).toBe(false);
    });

    it("becomes a merge patch of the whole document", () => {
        const draft = set("threshold", 9, set("minimum_area", 900));
        expect(toPatch(draft, "algorithms")).toEqual({
            algorithms: { Motion: { threshold: 9, minimum_area: 900 } },
        });
        expect(toPatch(draft, "")).toEqual({ Motion: { threshold: 9, minimum_area: 900 } });
    });
});
