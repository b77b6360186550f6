import { isObject, type Json } from "@/lib/json";

/** A word that an algorithm uses, and the colour that it means. */
export interface Tag {
    text: string;
    colour?: string;
}

/** The entries of a list of words, or of an object that gives each word a colour; nothing for other values. */
export function tagsOf(value: Json): Tag[] | undefined {
    if (Array.isArray(value)) return value.map((entry) => ({ text: isObject(entry) ? JSON.stringify(entry) : String(entry) }));
    if (!isObject(value)) return undefined;
    const tags = Object.entries(value).map(([text, entry]) => ({ text, colour: colourOf(entry) }));
    return tags.every((tag): tag is Required<Tag> => tag.colour !== undefined) ? tags : undefined;
}

/** {"r": 0, "g": 128, "b": 255} as CSS says it. */
function colourOf(value: Json): string | undefined {
    if (!isObject(value)) return undefined;
    const parts = ["r", "g", "b"].map((name) => value[name]);
    return parts.every((part) => typeof part === "number") ? `rgb(${parts.join(" ")})` : undefined;
}
