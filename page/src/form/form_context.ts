import type { Draft, Held } from "@/lib/draft";

/** What the fields of a form know of the whole. */
export interface FormContext {
    held: Held;
    draft: Draft;
    /** What a setting without a value of its own follows, as a text: "the common value". */
    followed: string;
    onFollow: (path: string) => void;
}

export const idPrefix = "set";
export const idSeparator = ".";

/** The path of a field, from the name that the form gives it in the page. */
export function pathOfId(id: string): string {
    return id.slice(idPrefix.length + idSeparator.length);
}
