import type { RJSFSchema } from "@rjsf/utils";
import { describe, expect, it, vi } from "vitest";
import { validator } from "@/form/validator";

const schema: RJSFSchema = {
    type: "object",
    properties: {
        Motion: {
            type: "object",
            properties: {
                threshold: { type: "number", minimum: 2, maximum: 15 },
                opening: { type: "integer", minimum: 0 },
                mode: { type: "string", enum: ["blank", "pixelate"] },
                name: { type: "string", pattern: "^[a-z]+$" },
            },
        },
        list: { type: "array", items: { type: "integer" } },
    },
};

function errors(data: unknown): Record<string, string | undefined> {
    const found = validator.validateFormData(data, schema).errors;
    return Object.fromEntries(found.map((error) => [error.property ?? "", error.message]));
}

describe("the validator", () => {
    it("finds nothing wrong with what is right", () => {
        expect(errors({ Motion: { threshold: 2, opening: 0, mode: "blank", name: "a" }, list: [1] })).toEqual({});
    });

    it("says what would be right, once a field", () => {
        expect(errors({ Motion: { threshold: 1, opening: 1.5, mode: "x", name: "A" }, list: [1, "a"] })).toEqual({
            ".Motion.threshold": "Must be 2 to 15",
            ".Motion.opening": "Must be a whole number",
            ".Motion.mode": "Must be one of blank, pixelate",
            ".Motion.name": "Must match ^[a-z]+$",
            ".list[1]": "Must be a whole number",
        });
        expect(errors({ Motion: { opening: -1 } })).toEqual({ ".Motion.opening": "Must be at least 0" });
        expect(errors({ Motion: { threshold: "" } })).toEqual({ ".Motion.threshold": "Must be a number" });
    });

    it("makes the tree of errors that a form shows", () => {
        const found = validator.validateFormData({ Motion: { threshold: 99 } }, schema);
        expect(found.errorSchema).toEqual({ Motion: { threshold: { __errors: ["Must be 2 to 15"] } } });
    });

    it("compiles no code, which the page may not run", () => {
        const evaluate = vi.spyOn(globalThis, "Function").mockImplementation(() => {
            throw new Error("code was compiled");
        });
        expect(validator.isValid(schema, { Motion: { threshold: 3 } }, schema)).toBe(true);
        expect(validator.isValid(schema, { Motion: { threshold: 1 } }, schema)).toBe(false);
        evaluate.mockRestore();
    });
});
