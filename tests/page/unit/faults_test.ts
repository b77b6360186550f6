import { describe, expect, it } from "vitest";
import { placeFaults } from "@/lib/faults";

const everywhere = () => true;

describe("faults of a refused change", () => {
    it("stand at their fields", () => {
        const faults = [
            { path: "streams.gate.settings.Motion.minimum_area", reason: "too small" },
            { path: "streams.gate.settings.Motion.minimum_area", reason: "and odd" },
            { path: "streams.gate.settings.PrivacyMask.zones[1]", reason: "no zone" },
        ];
        expect(placeFaults(faults, "streams.gate.settings", everywhere)).toEqual({
            errors: {
                Motion: { minimum_area: { __errors: ["too small", "and odd"] } },
                PrivacyMask: { zones: { 1: { __errors: ["no zone"] } } },
            },
            rest: [],
        });
    });

    it("are left over when they belong to no field", () => {
        const faults = [
            { path: "streams.gates.source", reason: "of another stream" },
            { path: "streams.gate", reason: "of the whole part" },
            { path: "", reason: "of everything" },
            { path: "streams.gate.unknown", reason: "no such field" },
        ];
        const placed = placeFaults(faults, "streams.gate", (path) => path !== "unknown");
        expect(placed.errors).toEqual({});
        expect(placed.rest).toEqual(faults);
    });

    it("are placed from the root too", () => {
        expect(placeFaults([{ path: "a.b", reason: "r" }], "", everywhere).errors).toEqual({ a: { b: { __errors: ["r"] } } });
    });
});
