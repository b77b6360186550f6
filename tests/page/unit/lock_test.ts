import { readFileSync } from "node:fs";
import { describe, expect, it } from "vitest";

describe("the list of packages", () => {
    const text = readFileSync("package-lock.json", "utf8");

    it("names no address: packages come from where the machine says", () => {
        expect(text).not.toMatch(/:\/\//);
    });

    it("holds what Node 18 runs", () => {
        const packages = Object.entries(
            (JSON.parse(text) as { packages: Record<string, { engines?: { node?: string } }> }).packages,
        );
        const later = packages.filter(([, { engines }]) => /^\s*(>=?|\^)\s*v?(19|[2-9]\d)\b[^|]*$/.test(engines?.node ?? ""));
        expect(later.map(([name]) => name)).toEqual([]);
    });
});
