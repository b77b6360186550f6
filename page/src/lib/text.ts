import type { Json } from "./json";

/** "minimum_area" as people write it: "Minimum area"; "PrivacyMask": "Privacy mask". */
export function title(name: string): string {
    const words = name
        .replace(/([a-z0-9])([A-Z])/g, "$1 $2")
        .replace(/_/g, " ")
        .trim()
        .toLowerCase();
    return words.charAt(0).toUpperCase() + words.slice(1);
}

/** A dotted path as people read it: "Motion > Minimum area"; that it is about settings goes without saying. */
export function titleOfPath(path: string): string {
    return path.replace(/^settings\./, "").split(".").map(title).join(" \u203a ");
}

/** A value as people read it. */
export function valueText(value: Json | undefined): string {
    if (value === undefined || value === null) return "nothing";
    if (value === "") return "empty";
    if (typeof value === "boolean") return value ? "on" : "off";
    if (Array.isArray(value)) return value.length === 0 ? "none" : value.map(valueText).join(", ");
    return typeof value === "object" ? JSON.stringify(value) : String(value);
}

/** The range of a number as its schema tells it; nothing where there is none. */
export function rangeText(schema: { minimum?: number | undefined; maximum?: number | undefined }): string | undefined {
    const { minimum, maximum } = schema;
    if (minimum !== undefined && maximum !== undefined) return `${minimum} to ${maximum}`;
    if (minimum !== undefined) return `at least ${minimum}`;
    return maximum !== undefined ? `at most ${maximum}` : undefined;
}

/** A number with so many digits behind the point, or a dash where there is none. */
export function fixed(value: Json | undefined, digits: number): string {
    return typeof value === "number" && Number.isFinite(value) ? value.toFixed(digits) : "\u2013";
}
