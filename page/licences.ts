import { existsSync, readdirSync, readFileSync } from "node:fs";
import { dirname, join } from "node:path";
import type { Plugin } from "vite";

/** The folder of the package that a module belongs to; nothing for the page's own. */
function packageOf(module: string): string | undefined {
    if (!module.includes("/node_modules/")) return undefined;
    let folder = dirname(module.replace(/^\0/, "").replace(/\?.*$/, ""));
    while (!existsSync(join(folder, "package.json")) || !("version" in readPackage(folder))) {
        if (dirname(folder) === folder) return undefined;
        folder = dirname(folder);
    }
    return folder;
}

function readPackage(folder: string): { name?: string; version?: string; license?: string } {
    return JSON.parse(readFileSync(join(folder, "package.json"), "utf8"));
}

function textOf(folder: string): string {
    const { name, version, license } = readPackage(folder);
    const file = readdirSync(folder).find((entry) => /^licen[cs]e/i.test(entry));
    const text = file === undefined ? "" : `\n\n${readFileSync(join(folder, file), "utf8").trim()}`;
    return `${name} ${version}: ${license}${text}\n`;
}

/** Writes licences.txt beside the page: those of all packages that became part of it, as they ask for. */
export function licences(): Plugin {
    return {
        name: "licences",
        generateBundle() {
            const folders = new Set([...this.getModuleIds()].flatMap((module) => packageOf(module) ?? []));
            const source = [...folders].sort().map(textOf).join(`\n${"-".repeat(80)}\n\n`);
            this.emitFile({ type: "asset", fileName: "licences.txt", source });
        },
    };
}
