import { describe, expect, it } from "vitest";
import {
    addMark,
    changeMark,
    moveEnd,
    nameOf,
    nothingFixed,
    placeMarkFaults,
    readNumber,
    toReferences,
    unfinished,
    type Mark,
} from "@/calibration/marks";

/** Two segments on the ground and a pole between them. */
function marks(): Mark[] {
    let made = addMark([], "ground", [[10, 20], [30, 40]]);
    made = addMark(made, "vertical", [[50, 60], [50, 20]]);
    made = addMark(made, "ground", [[1, 2], [3, 4]]);
    return made.map((mark) => ({ ...mark, metres: "7,1" }));
}

describe("marks", () => {
    it("are called by kind and number", () => {
        const made = marks();
        expect(made.map((mark) => nameOf(made, mark))).toEqual(["Ground 1", "Pole 1", "Ground 2"]);
    });

    it("keep their identity when another one goes", () => {
        const made = marks().slice(1);
        expect(addMark(made, "ground", [[0, 0], [1, 1]]).map((mark) => mark.id)).toEqual([2, 3, 4]);
    });

    it("are moved end by end", () => {
        expect(moveEnd(marks(), 2, 1, [55, 5])[1]!.ends).toEqual([[50, 60], [55, 5]]);
        expect(moveEnd(marks(), 2, 0, [55, 5])[1]!.ends).toEqual([[55, 5], [50, 20]]);
    });

    it("need a length, and a tolerance that is one or none", () => {
        for (const metres of ["", "0", "-1", "a"]) expect(unfinished(changeMark(marks(), 1, { metres }))).toHaveLength(1);
        for (const tolerance of ["0", "x"]) expect(unfinished(changeMark(marks(), 1, { tolerance }))).toHaveLength(1);
        expect(unfinished(changeMark(marks(), 1, { tolerance: "0.05" }))).toEqual([]);
    });

    it("become the references that the server calibrates from", () => {
        const made = changeMark(marks(), 2, { metres: "1.75", tolerance: "0.05" });
        const fixed = { ...nothingFixed, roll: "0", vertical_fov: " 27.3 " };
        expect(toReferences(made, { width: 768, height: 576 }, fixed, 1)).toEqual({
            size: [768, 576],
            ground: [
                { from: [10, 20], to: [30, 40], metres: 7.1 },
                { from: [1, 2], to: [3, 4], metres: 7.1 },
            ],
            vertical: [{ foot: [50, 60], top: [50, 20], metres: 1.75, tolerance: 0.05 }],
            fixed: { roll: 0, vertical_fov: 27.3 },
            click_error: 1,
        });
    });

    it("get the faults that are about them", () => {
        const faults = [
            { path: "ground[1].metres", reason: "too long" },
            { path: "vertical[0]", reason: "too short" },
            { path: "ground[7]", reason: "no such mark" },
            { path: "", reason: "too few references" },
        ];
        const placed = placeMarkFaults(faults, marks());
        expect([...placed.byMark]).toEqual([
            [3, "too long"],
            [2, "too short"],
        ]);
        expect(placed.rest).toEqual(faults.slice(2));
    });

    it("are read with a point or a comma", () => {
        expect([" 1,5 ", "1.5", "", "a"].map(readNumber)).toEqual([1.5, 1.5, NaN, NaN]);
    });
});
