export const plants = [
  { name: 'Tomato', everyDays: 1 },
  { name: 'Rosemary', everyDays: 7 },
  { name: 'Fern', everyDays: 3 },
];

/** The plants to be watered on the given day, counted from any fixed day. */
export function thirstyOn(day) {
  return plants.filter((plant) => day % plant.everyDays === 0);
}
